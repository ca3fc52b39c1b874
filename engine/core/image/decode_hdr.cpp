#include <charconv>
#include <cmath>
#include <cstring>
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
    unsigned char byte() { return *take(1); }
    /// The next bytes.
    const unsigned char* take(std::size_t count) {
        if (rest_.size() < count) throw PictureFault("the file is cut short");
        const auto* const first = reinterpret_cast<const unsigned char*>(rest_.data());
        rest_ = rest_.subspan(count);
        return first;
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

constexpr std::size_t kPixelBytes = 4;

/// Components one after the other, each in runs: 128 + count and a byte that is repeated, or count and the bytes.
void readPacked(Reader& file, std::span<unsigned char> line, std::vector<unsigned char>& components) {
    file.take(4);
    const std::size_t width = line.size() / kPixelBytes;
    components.resize(line.size());
    for (std::size_t c = 0; c < kPixelBytes; ++c) {
        unsigned char* const out = components.data() + c * width;
        for (std::size_t x = 0; x < width;) {
            std::size_t count = file.byte();
            const bool run = count > 128;
            if (run) count -= 128;
            if (count == 0 || count > width - x) throw PictureFault("a damaged scanline");
            if (run) {
                std::memset(out + x, file.byte(), count);
            } else {
                std::memcpy(out + x, file.take(count), count);
            }
            x += count;
        }
    }
    const unsigned char* const in = components.data();
    for (std::size_t x = 0; x < width; ++x) {
        for (std::size_t c = 0; c < kPixelBytes; ++c) line[kPixelBytes * x + c] = in[c * width + x];
    }
}

/// Pixels as they are; in old files (1, 1, 1, n) repeats the pixel before, and several of these count in steps of 256.
void readPlain(Reader& file, std::span<unsigned char> line) {
    int shift = 0;
    for (std::size_t at = 0; at < line.size();) {
        const unsigned char* const pixel = file.take(kPixelBytes);
        if (at > 0 && pixel[0] == 1 && pixel[1] == 1 && pixel[2] == 1) {
            if (shift > 24) throw PictureFault("a damaged scanline");
            const std::size_t count = std::size_t{pixel[3]} << shift;
            if (count > (line.size() - at) / kPixelBytes) throw PictureFault("a damaged scanline");
            for (const std::size_t end = at + kPixelBytes * count; at < end; ++at) line[at] = line[at - kPixelBytes];
            shift += 8;
        } else {
            std::memcpy(line.data() + at, pixel, kPixelBytes);
            at += kPixelBytes;
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

class HdrDecoder final : public PictureDecoder {
public:
    explicit HdrDecoder(std::span<const char> bytes) : file_(bytes) {
        const Header header = readHeader(file_);
        // Repeats of old files, of which none has so many; packed scanlines stay far below.
        constexpr std::uint64_t pixelsPerByte = 256;
        checkPictureSize(header.width, header.height, 3, bytes.size() * pixelsPerByte);
        form_.width = header.width;
        form_.height = header.height;
        form_.channels = 3;
        form_.samples = Samples::rgbe;
        form_.colors = colorsOf(header.primaries);
        form_.luminanceOfWhite = kRadianceEfficacy;
        form_.exposure = header.exposure;
    }
    void read(std::span<unsigned char> rows) override {
        for (; !rows.empty(); rows = rows.subspan(form_.rowBytes())) {
            const auto line = rows.first(form_.rowBytes());
            if (file_.beginsPacked(static_cast<std::size_t>(form_.width))) {
                readPacked(file_, line, components_);
            } else {
                readPlain(file_, line);
            }
        }
    }

private:
    Reader file_;
    std::vector<unsigned char> components_;
};

}  // namespace

bool isHdr(std::span<const char> bytes) noexcept { return bytes.size() >= 2 && bytes[0] == '#' && bytes[1] == '?'; }

std::unique_ptr<PictureDecoder> decodeHdr(std::span<const char> bytes) { return std::make_unique<HdrDecoder>(bytes); }

}  // namespace nemra::core
