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

bool readRows(jpeg_decompress_struct& jpeg, JpegFaults& errors, JSAMPROW first, std::size_t rowBytes, std::size_t rows) {
    if (setjmp(errors.jump)) return false;
    for (std::size_t y = 0; y < rows; ++y) {
        JSAMPROW row = first + rowBytes * y;
        jpeg_read_scanlines(&jpeg, &row, 1);
    }
    return true;
}

bool end(jpeg_decompress_struct& jpeg, JpegFaults& errors) {
    if (setjmp(errors.jump)) return false;
    jpeg_finish_decompress(&jpeg);
    return true;
}

class JpegDecoder final : public PictureDecoder {
public:
    explicit JpegDecoder(std::span<const char> bytes) {
        jpeg_.err = jpeg_std_error(&errors_.manager);
        errors_.manager.error_exit = leaveJpeg;
        errors_.manager.emit_message = leaveOnWarning;
        try {
            open(bytes);
        } catch (...) {
            jpeg_destroy_decompress(&jpeg_);
            throw;
        }
    }
    ~JpegDecoder() override { jpeg_destroy_decompress(&jpeg_); }
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;

    void read(std::span<unsigned char> rows) override {
        const std::size_t rowBytes = form_.rowBytes();
        demand(readRows(jpeg_, errors_, rows.data(), rowBytes, rows.size() / rowBytes));
    }
    void finish() override { demand(end(jpeg_, errors_)); }

private:
    void open(std::span<const char> bytes) {
        demand(readHead(jpeg_, errors_, bytes));
        const auto channels = static_cast<std::size_t>(jpeg_.num_components);
        if (channels != 1 && channels != 3)
            throw PictureFault("only grey and RGB pictures are read, not " + std::to_string(channels) + " components");
        constexpr std::uint64_t pixelsPerByte = 1024;  // a block of 8 x 8 takes at least a bit, chroma may be subsampled
        checkPictureSize(jpeg_.image_width, jpeg_.image_height, channels, bytes.size() * pixelsPerByte);
        demand(begin(jpeg_, errors_));
        form_.width = static_cast<int>(jpeg_.image_width);
        form_.height = static_cast<int>(jpeg_.image_height);
        form_.channels = static_cast<int>(channels);
        form_.samples = Samples::codes8;
        form_.encoded = true;
    }
    void demand(bool done) const {
        if (!done) throw PictureFault(errors_.text);
    }

    jpeg_decompress_struct jpeg_{};
    JpegFaults errors_{};
};

}  // namespace

bool isJpeg(std::span<const char> bytes) noexcept {
    return bytes.size() >= 3 && bytes[0] == '\xff' && bytes[1] == '\xd8' && bytes[2] == '\xff';
}

std::unique_ptr<PictureDecoder> decodeJpeg(std::span<const char> bytes) { return std::make_unique<JpegDecoder>(bytes); }

}  // namespace nemra::core
