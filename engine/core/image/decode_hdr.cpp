#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "engine/common/byte_reader.h"
#include "engine/core/image/decode.h"

namespace nemra::core {

namespace {

/// lm/W by which Radiance turns its radiances into luminances.
constexpr double kRadianceEfficacy = 179.0;
constexpr std::size_t kMaxHeaderLines = 4096;

class Reader {
public:
    explicit Reader(std::span<const char> bytes) : rest_(bytes) {}

    std::string_view line() {
        const std::string_view text(rest_.data(), rest_.size());
        const auto end = text.find('\n');
        if (end == std::string_view::npos) throw PictureFault("the header has no end");
        rest_ = rest_.subspan(end + 1);
        return text.substr(0, end);
    }
    unsigned char byte() {
        if (rest_.empty()) throw PictureFault("the file is cut short");
        const char first = rest_.front();
        rest_ = rest_.subspan(1);
        return static_cast<unsigned char>(first);
    }
    bool beginsPacked(std::size_t width) const noexcept {
        const auto at = [&](std::size_t i) { return static_cast<unsigned char>(rest_[i]); };
        return width >= 8 && width <= 0x7fff && rest_.size() >= 4 && at(0) == 2 && at(1) == 2 && at(2) < 128 &&
               (std::size_t{at(2)} << 8 | at(3)) == width;
    }

private:
    std::span<const char> rest_;
};

/// The numbers of a header line; fewer than wanted if it hasn't more.
std::vector<double> numbersOf(std::string_view text) {
    std::vector<double> numbers;
    while (numbers.size() < 8) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
        double number = 0.0;
        const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (fault != std::errc()) break;
        numbers.push_back(number);
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    }
    return numbers;
}

using Pixel = std::array<unsigned char, 4>;

void readPacked(Reader& file, std::vector<Pixel>& line) {
    for (int i = 0; i < 4; ++i) file.byte();
    for (std::size_t c = 0; c < 4; ++c) {
        for (std::size_t x = 0; x < line.size();) {
            std::size_t count = file.byte();
            const bool run = count > 128;
            if (run) count -= 128;
            if (count == 0 || count > line.size() - x) throw PictureFault("a damaged scanline");
            const unsigned char value = run ? file.byte() : 0;
            for (; count > 0; --count, ++x) line[x][c] = run ? value : file.byte();
        }
    }
}

/// Pixels as they are; in old files (1, 1, 1, n) repeats the pixel before, and several of these count in steps of 256.
void readPlain(Reader& file, std::vector<Pixel>& line) {
    int shift = 0;
    for (std::size_t x = 0; x < line.size();) {
        Pixel pixel{};
        for (unsigned char& component : pixel) component = file.byte();
        if (x > 0 && pixel[0] == 1 && pixel[1] == 1 && pixel[2] == 1) {
            if (shift > 24) throw PictureFault("a damaged scanline");
            const std::size_t count = std::size_t{pixel[3]} << shift;
            if (count > line.size() - x) throw PictureFault("a damaged scanline");
            for (std::size_t i = 0; i < count; ++i, ++x) line[x] = line[x - 1];
            shift += 8;
        } else {
            line[x++] = pixel;
            shift = 0;
        }
    }
}

struct Header {
    double exposure = 1.0;  ///< factor that was applied to the pixels
    std::vector<double> primaries;
    int width = 0;
    int height = 0;
};

Header readHeader(Reader& file) {
    Header header;
    for (std::size_t count = 0;; ++count) {
        if (count > kMaxHeaderLines) throw PictureFault("the header has no end");
        const std::string_view line = file.line();
        if (line.empty()) break;
        if (line.starts_with("FORMAT=") && line.find("32-bit_rle_rgbe") == std::string_view::npos) {
            throw PictureFault("pixels of another form than 32-bit_rle_rgbe");
        }
        if (line.starts_with("EXPOSURE=")) {  // several multiply
            const auto numbers = numbersOf(line.substr(9));
            if (!numbers.empty()) header.exposure *= numbers[0];
        }
        if (line.starts_with("PRIMARIES=")) header.primaries = numbersOf(line.substr(10));
    }
    const std::string_view size = file.line();
    const auto x = size.find(" +X ");
    if (!size.starts_with("-Y ") || x == std::string_view::npos) throw PictureFault("rows in another order than -Y +X");
    const auto height = numbersOf(size.substr(3, x - 3));
    const auto width = numbersOf(size.substr(x + 4));
    const auto side = [](const std::vector<double>& n) { return n.size() == 1 && n[0] >= 1.0 && n[0] <= 65536.0; };
    if (!side(width) || !side(height)) throw PictureFault("a size that can't be read");
    header.width = static_cast<int>(width[0]);
    header.height = static_cast<int>(height[0]);
    if (!(header.exposure > 0.0) || !std::isfinite(header.exposure)) throw PictureFault("an exposure that can't be undone");
    return header;
}

ColorSpace colorsOf(const std::vector<double>& p) {
    if (p.size() != 8) return radianceColorSpace();
    const ColorSpace named = linearColorSpace({p[0], p[1]}, {p[2], p[3]}, {p[4], p[5]}, {p[6], p[7]});
    for (const double entry : named.toXyzRows) {
        if (!std::isfinite(entry)) return radianceColorSpace();
    }
    return named;
}

}  // namespace

bool isHdr(std::span<const char> bytes) noexcept { return bytes.size() >= 2 && bytes[0] == '#' && bytes[1] == '?'; }

Pixels decodeHdr(std::span<const char> bytes) {
    Reader file(bytes);
    const Header header = readHeader(file);
    // Repeats of old files, of which none has so many; packed scanlines stay far below.
    constexpr std::uint64_t pixelsPerByte = 256;
    checkPictureSize(header.width, header.height, 3, bytes.size() * pixelsPerByte);
    Pixels pixels{header.width, header.height, 3, {}, false, colorsOf(header.primaries), kRadianceEfficacy};
    std::vector<Pixel> line(static_cast<std::size_t>(header.width));
    for (int y = 0; y < header.height; ++y) {
        file.beginsPacked(line.size()) ? readPacked(file, line) : readPlain(file, line);
        // Grows as lines come, since a file may say that it has more than it has.
        pixels.values.resize(pixels.values.size() + 3 * line.size());
        float* out = pixels.values.data() + pixels.values.size() - 3 * line.size();
        for (const Pixel& pixel : line) {
            const double scale = pixel[3] == 0 ? 0.0 : std::ldexp(1.0, pixel[3] - 136) / header.exposure;
            for (std::size_t c = 0; c < 3; ++c) *out++ = static_cast<float>((pixel[c] + 0.5) * scale);
        }
    }
    return pixels;
}

}  // namespace nemra::core
