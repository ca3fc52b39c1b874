#include "engine/core/image/picture_film.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "engine/common/huge_pages.h"
#include "engine/core/film/arrays.h"
#include "engine/core/film/pageable.h"

namespace nemra::core {

void checkPictureSize(long long width, long long height, std::size_t channels, std::uint64_t plausiblePixels) {
    const auto size = [&] { return std::to_string(width) + " x " + std::to_string(height) + " pixels"; };
    if (width < 1 || height < 1) throw PictureFault("a picture of " + size());
    const auto w = static_cast<std::uint64_t>(width);
    const auto h = static_cast<std::uint64_t>(height);
    const std::uint64_t perPixel = sizeof(double) * std::max<std::uint64_t>(channels, 1);
    if (perPixel > kMaxBufferBytes || w > kMaxBufferBytes / perPixel || h > kMaxBufferBytes / perPixel / w) {
        throw PictureFault(size() + " with " + std::to_string(channels) + " channels take more than " +
                           std::to_string(kMaxBufferBytes) + " bytes");
    }
    constexpr std::uint64_t free = std::uint64_t{16} << 20;  // readers' own buffers come to it, several times over
    constexpr std::uint64_t sums = 2 * sizeof(double);       // of a channel
    constexpr std::uint64_t rest = 3 * sizeof(double) + 2 * sizeof(std::uint32_t) + 1;
    const bool large = w * h > free / (sums * channels + rest);
    if (large && w * h > plausiblePixels) throw PictureFault("the file is too small to hold " + size());
}

std::shared_ptr<Film> makePictureFilm(int width, int height, std::vector<Channel> channels) {
    auto film = std::make_shared<Film>();
    film->width = width;
    film->height = height;
    film->channels = std::move(channels);
    makePageable(*film);
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    reserveOnHugePages(film->high, pixels * film->channels.size());
    reserveOnHugePages(film->low, pixels * film->channels.size());
    makeArrays(*film);
    return film;
}

void PictureWriter::put(int x, int y, int count, const double* values) const noexcept {
    const std::size_t channels = film_.channels.size();
    const std::size_t first = film_.pixel(x, y);
    double* const high = film_.high.data() + first * channels;
    const auto cells = channels * static_cast<std::size_t>(count);
    for (std::size_t cell = 0; cell < cells; ++cell) high[cell] = std::isfinite(values[cell]) ? values[cell] : 0.0;
    std::fill_n(film_.samples.data() + first, count, 1U);
    const double* of = high;
    for (std::size_t pixel = first; pixel < first + static_cast<std::size_t>(count); ++pixel, of += channels) {
        double value = 0.0;
        if (reference_ >= 0) {
            value = of[reference_];
        } else {
            for (std::size_t c = 0; c < channels; ++c) value += of[c] / static_cast<double>(channels);
        }
        film_.squares.put(pixel, value * value);
    }
}

std::vector<Channel> tristimulusChannels() {
    std::vector<Channel> channels;
    for (const char* const name : {"X", "Y", "Z"}) channels.push_back({name, ChannelKind::luminous, 0.0, 0.0, "cd.m^-2"});
    return channels;
}

Channel alphaChannel() { return {"A", ChannelKind::unknown, 0.0, 0.0, "1"}; }

Channel bandChannel(double wavelength, double bandwidth, std::string unit) {
    std::array<char, 32> text{};
    const double nm = std::round(wavelength * 1.0e12) / 1000.0;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), nm).ptr;
    return {std::string(text.data(), end) + " nm", ChannelKind::spectral, wavelength, bandwidth, std::move(unit)};
}

std::vector<double> bandwidthsBetween(const std::vector<double>& centres) {
    const std::size_t count = centres.size();
    std::vector<double> widths(count, 1.0e-9);
    if (count < 2) return widths;
    for (std::size_t i = 0; i < count; ++i) {
        const double below = i > 0 ? centres[i] - centres[i - 1] : centres[1] - centres[0];
        const double above = i + 1 < count ? centres[i + 1] - centres[i] : centres[i] - centres[i - 1];
        widths[i] = (below + above) / 2.0;
    }
    return widths;
}

}  // namespace nemra::core
