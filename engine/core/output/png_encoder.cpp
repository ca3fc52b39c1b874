#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <stdexcept>
#include <string>

#include "engine/core/output/encode.h"
#include "engine/core/output/icc_profile.h"

namespace nemra::core {

namespace {

/// What the library's callbacks need. It leaves by longjmp on a fault, so nothing with a destructor may be made below the setjmp.
struct Sink {
    std::vector<char> bytes;
    std::string fault;
    bool outOfMemory = false;
};

void appendBytes(png_structp png, png_bytep data, png_size_t size) {
    auto* const sink = static_cast<Sink*>(png_get_io_ptr(png));
    try {
        sink->bytes.insert(sink->bytes.end(), data, data + size);
        return;
    } catch (...) {
        sink->outOfMemory = true;
    }
    png_error(png, "out of memory");
}

void noFlush(png_structp) {}

[[noreturn]] void takeFault(png_structp png, png_const_charp text) {
    auto* const sink = static_cast<Sink*>(png_get_error_ptr(png));
    try {
        sink->fault = text;
    } catch (...) {
        sink->outOfMemory = true;
    }
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

void setColors(png_structp png, png_infop info, const DisplayImage& image, const ColorSpace& space,
               const std::vector<char>& profile) {
    if (profile.empty()) return;
    png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, reinterpret_cast<png_const_bytep>(profile.data()),
                 static_cast<png_uint_32>(profile.size()));
    if (!image.lights.empty()) return;
    // For programs that read no profiles, the nearest power.
    double fileGamma = 1.0;
    if (space.curve == ColorSpace::Curve::rec2020) fileGamma = 1.0 / 2.2;
    if (space.curve == ColorSpace::Curve::srgb) fileGamma = 1.0 / 2.2;
    if (image.gamma > 0.0) fileGamma = 1.0 / image.gamma;
    png_set_gAMA(png, info, fileGamma);
    if (space.curve == ColorSpace::Curve::linear) return;  // imaginary primaries don't fit the chunk
    png_set_cHRM(png, info, space.white.x, space.white.y, space.red.x, space.red.y, space.green.x, space.green.y, space.blue.x,
                 space.blue.y);
}

bool write(png_structp png, png_infop info, const DisplayImage& image, const ColorSpace& space,
           const std::vector<char>& profile) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height), image.bits,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    setColors(png, info, image, space, profile);
    png_write_info(png, info);
    const std::size_t rowBytes = 3 * static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.bits / 8);
    for (int y = 0; y < image.height; ++y) {
        png_write_row(png, image.bytes.data() + rowBytes * static_cast<std::size_t>(y));
    }
    png_write_end(png, nullptr);
    return true;
}

}  // namespace

std::vector<char> encodePng(const DisplayImage& image) {
    Sink sink;
    const std::vector<char> profile = profileOf(image);
    const ColorSpace& space = image.space();
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &sink, takeFault, ignoreWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        throw std::runtime_error("out of memory");
    }
    png_set_write_fn(png, &sink, appendBytes, noFlush);
    png_set_user_limits(png, 0x7FFFFFFF, 0x7FFFFFFF);
    const bool done = write(png, info, image, space, profile);
    png_destroy_write_struct(&png, &info);
    if (!done) throw std::runtime_error(sink.outOfMemory ? "out of memory" : sink.fault);
    return std::move(sink.bytes);
}

}  // namespace nemra::core
