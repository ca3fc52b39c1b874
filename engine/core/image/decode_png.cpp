#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>

#include "engine/core/image/decode.h"

namespace nemra::core {

namespace {

constexpr png_uint_32 kMaxSide = 65536;
constexpr std::size_t kRowsBytes = std::size_t{4} << 20;

/// What the library's callbacks need. It leaves by longjmp on a fault, so nothing with a destructor may be made below a setjmp.
struct Source {
    std::span<const char> rest;
    char fault[200] = {};
};

void takeBytes(png_structp png, png_bytep out, png_size_t size) {
    auto* const source = static_cast<Source*>(png_get_io_ptr(png));
    if (size > source->rest.size()) png_error(png, "the file is cut short");
    std::memcpy(out, source->rest.data(), size);
    source->rest = source->rest.subspan(size);
}

[[noreturn]] void takeFault(png_structp png, png_const_charp text) {
    auto* const source = static_cast<Source*>(png_get_error_ptr(png));
    std::strncpy(source->fault, text, sizeof source->fault - 1);
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

bool readHead(png_structp png, png_infop info, int* bitsPerPixel) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_read_info(png, info);
    *bitsPerPixel = png_get_bit_depth(png, info) * png_get_channels(png, info);
    png_set_expand(png);
    png_set_expand_16(png);
    png_set_swap(png);  // the format has the high byte first
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    return true;
}

bool readRows(png_structp png, png_bytep first, std::size_t rowBytes, std::size_t rows) {
    if (setjmp(png_jmpbuf(png))) return false;
    for (std::size_t y = 0; y < rows; ++y) png_read_row(png, first + rowBytes * y, nullptr);
    return true;
}

bool readEnd(png_structp png) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_read_end(png, nullptr);
    return true;
}

struct Reader {
    Source source;
    png_structp png = nullptr;
    png_infop info = nullptr;

    explicit Reader(std::span<const char> bytes) : source{bytes} {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &source, takeFault, ignoreWarning);
        info = png ? png_create_info_struct(png) : nullptr;
        if (!info) throw std::bad_alloc();
        png_set_read_fn(png, &source, takeBytes);
        png_set_user_limits(png, kMaxSide, kMaxSide);
        png_set_chunk_malloc_max(png, png_alloc_size_t{1} << 23);
    }
    ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
};

}  // namespace

bool isPng(std::span<const char> bytes) noexcept {
    return bytes.size() >= 8 && png_sig_cmp(reinterpret_cast<png_const_bytep>(bytes.data()), 0, 8) == 0;
}

Pixels decodePng(std::span<const char> bytes) {
    Reader reader(bytes);
    int bitsPerPixel = 0;
    if (!readHead(reader.png, reader.info, &bitsPerPixel)) throw PictureFault(reader.source.fault);
    const png_uint_32 width = png_get_image_width(reader.png, reader.info);
    const png_uint_32 height = png_get_image_height(reader.png, reader.info);
    const auto channels = static_cast<std::size_t>(png_get_channels(reader.png, reader.info));
    constexpr std::uint64_t deflate = 1100;  // bytes that one of a deflated stream stands for at most, and a little
    checkPictureSize(width, height, channels, bytes.size() * deflate * 8 / static_cast<unsigned>(std::max(bitsPerPixel, 1)));
    const std::size_t rowBytes = png_get_rowbytes(reader.png, reader.info);
    if (png_get_bit_depth(reader.png, reader.info) != 16 || rowBytes != sizeof(std::uint16_t) * channels * width) {
        throw PictureFault("pixels of an unknown form");
    }
    std::vector<std::uint16_t> codes;
    const bool isWhole = png_get_interlace_type(reader.png, reader.info) != PNG_INTERLACE_NONE;
    const std::size_t together = isWhole ? height : std::max<std::size_t>(1, kRowsBytes / rowBytes);
    for (int pass = 0; pass < (isWhole ? PNG_INTERLACE_ADAM7_PASSES : 1); ++pass) {
        // Memory is taken as rows come, since a file may say that it has more than it has.
        for (std::size_t y = 0; y < height; y += together) {
            const std::size_t rows = std::min(together, height - y);
            codes.resize(std::max(codes.size(), channels * width * (y + rows)));
            auto* const first = reinterpret_cast<png_bytep>(codes.data() + channels * width * y);
            if (!readRows(reader.png, first, rowBytes, rows)) throw PictureFault(reader.source.fault);
        }
    }
    if (!readEnd(reader.png)) throw PictureFault(reader.source.fault);
    Pixels pixels{
        static_cast<int>(width), static_cast<int>(height), static_cast<int>(channels), {}, true, std::nullopt, 1.0, 65535};
    pixels.values.resize(codes.size());
    std::transform(codes.begin(), codes.end(), pixels.values.begin(), [](std::uint16_t code) { return code / 65535.0F; });
    return pixels;
}

}  // namespace nemra::core
