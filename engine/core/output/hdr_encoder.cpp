#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "engine/core/output/encode.h"
#include "engine/core/output/in_turn.h"
#include "engine/core/output/radiance_view.h"

namespace nemra::core {

namespace {

/// lm/W by which Radiance turns its radiances, W/(m2 sr) in three bands, into luminances.
constexpr double kRadianceEfficacy = 179.0;

using Pixel = std::array<unsigned char, 4>;

/// Shared exponent: value = (mantissa + 0.5) / 256 * 2^(exponent - 128), negative components as 0.
Pixel toRgbe(const std::array<double, 3>& rgb) {
    std::array<double, 3> c{};
    for (std::size_t i = 0; i < 3; ++i) c[i] = rgb[i] > 0.0 ? std::min(rgb[i], 1.0e38) : 0.0;
    const double largest = std::max({c[0], c[1], c[2]});
    if (largest < 1.0e-32) return {};
    int exponent = 0;
    const double scale = std::frexp(largest, &exponent) * 256.0 / largest;
    Pixel pixel{};
    for (std::size_t i = 0; i < 3; ++i) pixel[i] = static_cast<unsigned char>(std::min(255.0, c[i] * scale));
    pixel[3] = static_cast<unsigned char>(exponent + 128);
    return pixel;
}

/// One component of a scanline: runs of at least four equal bytes as (128 + count, byte), else (count, bytes).
void appendRuns(std::vector<char>& file, const std::vector<unsigned char>& bytes) {
    const std::size_t size = bytes.size();
    const auto runAt = [&](std::size_t at) {
        std::size_t end = at + 1;
        while (end < size && end - at < 127 && bytes[end] == bytes[at]) ++end;
        return end - at;
    };
    for (std::size_t at = 0; at < size;) {
        const std::size_t run = runAt(at);
        if (run >= 4) {
            file.push_back(static_cast<char>(128 + run));
            file.push_back(static_cast<char>(bytes[at]));
            at += run;
            continue;
        }
        std::size_t end = at;
        while (end < size && end - at < 128) {
            const std::size_t next = runAt(end);
            if (next >= 4) break;
            end += next;
        }
        end = std::min({end, at + 128, size});
        file.push_back(static_cast<char>(end - at));
        file.insert(file.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                    bytes.begin() + static_cast<std::ptrdiff_t>(end));
        at = end;
    }
}

void appendScanline(std::vector<char>& file, const std::vector<Pixel>& line) {
    const std::size_t width = line.size();
    if (width < 8 || width > 0x7fff) {  // too short or too long for the packed form
        for (const Pixel& pixel : line) file.insert(file.end(), pixel.begin(), pixel.end());
        return;
    }
    file.insert(file.end(), {2, 2, static_cast<char>(width >> 8), static_cast<char>(width & 0xff)});
    std::vector<unsigned char> component(width);
    for (std::size_t c = 0; c < 4; ++c) {
        std::transform(line.begin(), line.end(), component.begin(), [c](const Pixel& pixel) { return pixel[c]; });
        appendRuns(file, component);
    }
}

std::string headerOf(const Raw& raw) {
    std::string header = "#?RADIANCE\nSOFTWARE=nemra\n";
    if (const auto instrument = raw.instrument()) {
        const std::string view = radianceView(*instrument, raw.width(), raw.height());
        if (!view.empty()) header += "VIEW=" + view + "\n";
    }
    // Values are what was measured: no exposure was applied. Primaries are the format's own, said for those who expect others.
    header += "EXPOSURE=1\nPRIMARIES=0.640 0.330 0.290 0.600 0.150 0.060 0.3333 0.3333\nFORMAT=32-bit_rle_rgbe\n\n";
    return header + "-Y " + std::to_string(raw.height()) + " +X " + std::to_string(raw.width()) + "\n";
}

}  // namespace

std::vector<char> encodeHdr(const Raw& raw) {
    const auto film = raw.film();
    const XyzImage xyz = toXyz(*film, *raw.view(), "cie1931_2deg");
    // A sensor of energies measures W/(m2 sr) itself, and toXyz gives what it takes for a grey as Y.
    const bool energy =
        std::any_of(film->channels.begin(), film->channels.end(), [](const Channel& c) { return c.kind == ChannelKind::energy; });
    const double scale = energy ? 1.0 : 1.0 / kRadianceEfficacy;
    const ColorSpace& space = radianceColorSpace();

    const std::string header = headerOf(raw);
    std::vector<char> file(header.begin(), header.end());
    const auto width = static_cast<std::size_t>(xyz.width);
    const auto height = static_cast<std::size_t>(xyz.height);
    constexpr std::size_t together = 64;  // scanlines
    inTurn((height + together - 1) / together,
           [&](std::size_t i, std::vector<char>& lines) {
               std::vector<Pixel> line(width);
               for (std::size_t y = i * together; y < std::min(height, (i + 1) * together); ++y) {
                   for (std::size_t x = 0; x < width; ++x) {
                       const float* const value = xyz.values.data() + 3 * (y * width + x);
                       std::array<double, 3> rgb{value[1], value[1], value[1]};
                       if (!energy) rgb = space.linear(value[0], value[1], value[2]);
                       for (double& component : rgb) component *= scale;
                       line[x] = toRgbe(rgb);
                   }
                   appendScanline(lines, line);
               }
           },
           [&](const std::vector<char>& lines) {
               file.insert(file.end(), lines.begin(), lines.end());
               return true;
           });
    return file;
}

}  // namespace nemra::core
