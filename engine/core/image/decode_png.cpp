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
    if (png_get_bit_depth(png, info) == 16) png_set_swap(png);  // the format has the high byte first
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

class PngDecoder final : public PictureDecoder {
public:
    explicit PngDecoder(std::span<const char> bytes) : source_{bytes} {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &source_, takeFault, ignoreWarning);
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        try {
            if (!info_) throw std::bad_alloc();
            open(bytes.size());
        } catch (...) {
            png_destroy_read_struct(&png_, &info_, nullptr);
            throw;
        }
    }
    ~PngDecoder() override { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngDecoder(const PngDecoder&) = delete;
    PngDecoder& operator=(const PngDecoder&) = delete;

    void read(std::span<unsigned char> rows) override {
        if (!isInterlaced_) return readNext(rows);
        if (whole_.empty()) readPasses();
        std::copy_n(whole_.begin() + static_cast<std::ptrdiff_t>(taken_), rows.size(), rows.begin());
        taken_ += rows.size();
    }
    void finish() override { demand(readEnd(png_)); }

private:
    void open(std::size_t size) {
        png_set_read_fn(png_, &source_, takeBytes);
        png_set_user_limits(png_, kMaxSide, kMaxSide);
        png_set_chunk_malloc_max(png_, png_alloc_size_t{1} << 23);
        int bitsPerPixel = 0;
        demand(readHead(png_, info_, &bitsPerPixel));
        const png_uint_32 width = png_get_image_width(png_, info_);
        const png_uint_32 height = png_get_image_height(png_, info_);
        const auto channels = static_cast<std::size_t>(png_get_channels(png_, info_));
        constexpr std::uint64_t deflate = 1100;  // bytes that one of a deflated stream stands for at most, and a little
        checkPictureSize(width, height, channels, size * deflate * 8 / static_cast<unsigned>(std::max(bitsPerPixel, 1)));
        form_.width = static_cast<int>(width);
        form_.height = static_cast<int>(height);
        form_.channels = static_cast<int>(channels);
        const int bits = png_get_bit_depth(png_, info_);
        form_.samples = bits == 16 ? Samples::codes16 : Samples::codes8;
        form_.encoded = true;
        if ((bits != 8 && bits != 16) || png_get_rowbytes(png_, info_) != form_.rowBytes()) {
            throw PictureFault("pixels of an unknown form");
        }
        isInterlaced_ = png_get_interlace_type(png_, info_) != PNG_INTERLACE_NONE;
    }
    void readNext(std::span<unsigned char> rows) {
        const std::size_t rowBytes = form_.rowBytes();
        demand(readRows(png_, rows.data(), rowBytes, rows.size() / rowBytes));
    }
    void readPasses() {
        const std::size_t rowBytes = form_.rowBytes();
        const auto height = static_cast<std::size_t>(form_.height);
        const std::size_t together = std::max<std::size_t>(1, kRowsBytes / rowBytes);
        for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
            // Memory is taken as rows come, since a file may say that it has more than it has.
            for (std::size_t y = 0; y < height; y += together) {
                const std::size_t rows = std::min(together, height - y);
                whole_.resize(std::max(whole_.size(), rowBytes * (y + rows)));
                readNext(std::span(whole_).subspan(rowBytes * y, rowBytes * rows));
            }
        }
    }
    void demand(bool done) const {
        if (!done) throw PictureFault(source_.fault);
    }

    Source source_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    bool isInterlaced_ = false;
    std::vector<unsigned char> whole_;  ///< of an interlaced picture, whose rows come in several passes
    std::size_t taken_ = 0;
};

}  // namespace

bool isPng(std::span<const char> bytes) noexcept {
    return bytes.size() >= 8 && png_sig_cmp(reinterpret_cast<png_const_bytep>(bytes.data()), 0, 8) == 0;
}

std::unique_ptr<PictureDecoder> decodePng(std::span<const char> bytes) { return std::make_unique<PngDecoder>(bytes); }

}  // namespace nemra::core
