#include <algorithm>

#include "engine/core/image/decode.h"
#include "engine/core/image/jpeg_faults.h"

namespace nemra::core {

namespace {

/// Damage within the data is a warning to the library, which fills the gap with grey; to us it is a fault.
void leaveOnWarning(j_common_ptr info, int level) {
    if (level < 0) leaveJpeg(info);
}

bool readHead(jpeg_decompress_struct& jpeg, JpegFaults& errors, std::span<const char> bytes) {
    if (setjmp(errors.jump)) return false;
    jpeg_create_decompress(&jpeg);
    jpeg.mem->max_memory_to_use = 1L << 30;
    jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned long>(bytes.size()));
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = jpeg.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
    return true;
}

bool begin(jpeg_decompress_struct& jpeg, JpegFaults& errors) {
    if (setjmp(errors.jump)) return false;
    jpeg_start_decompress(&jpeg);
    return true;
}

bool readRow(jpeg_decompress_struct& jpeg, JpegFaults& errors, JSAMPROW row) {
    if (setjmp(errors.jump)) return false;
    jpeg_read_scanlines(&jpeg, &row, 1);
    return true;
}

bool end(jpeg_decompress_struct& jpeg, JpegFaults& errors) {
    if (setjmp(errors.jump)) return false;
    jpeg_finish_decompress(&jpeg);
    return true;
}

struct Reader {
    jpeg_decompress_struct jpeg{};
    JpegFaults errors{};

    Reader() {
        jpeg.err = jpeg_std_error(&errors.manager);
        errors.manager.error_exit = leaveJpeg;
        errors.manager.emit_message = leaveOnWarning;
    }
    ~Reader() { jpeg_destroy_decompress(&jpeg); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
};

}  // namespace

bool isJpeg(std::span<const char> bytes) noexcept {
    return bytes.size() >= 3 && bytes[0] == '\xff' && bytes[1] == '\xd8' && bytes[2] == '\xff';
}

Pixels decodeJpeg(std::span<const char> bytes) {
    Reader reader;
    if (!readHead(reader.jpeg, reader.errors, bytes)) throw PictureFault(reader.errors.text);
    const auto channels = static_cast<std::size_t>(reader.jpeg.num_components);
    if (channels != 1 && channels != 3)
        throw PictureFault("only grey and RGB pictures are read, not " + std::to_string(channels) + " components");
    const std::size_t width = reader.jpeg.image_width;
    const std::size_t height = reader.jpeg.image_height;
    constexpr std::uint64_t pixelsPerByte = 1024;  // a block of 8 x 8 takes at least a bit, chroma may be subsampled
    checkPictureSize(static_cast<long long>(width), static_cast<long long>(height), channels, bytes.size() * pixelsPerByte);
    const auto demand = [&](bool done) {
        if (!done) throw PictureFault(reader.errors.text);
    };
    demand(begin(reader.jpeg, reader.errors));
    std::vector<JSAMPLE> codes;  // grows as rows come, since a file may say that it has more than it has
    for (std::size_t y = 0; y < height; ++y) {
        codes.resize(channels * width * (y + 1));
        demand(readRow(reader.jpeg, reader.errors, codes.data() + channels * width * y));
    }
    demand(end(reader.jpeg, reader.errors));
    Pixels pixels{
        static_cast<int>(width), static_cast<int>(height), static_cast<int>(channels), {}, true, std::nullopt, 1.0, 255};
    pixels.values.resize(codes.size());
    std::transform(codes.begin(), codes.end(), pixels.values.begin(), [](JSAMPLE code) { return code / 255.0F; });
    return pixels;
}

}  // namespace nemra::core
