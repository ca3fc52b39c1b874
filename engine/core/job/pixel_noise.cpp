#include "engine/core/job/pixel_noise.h"

#include <algorithm>

namespace nemra::core {

PixelNoise pixelNoise(const Film& film, std::size_t pixel, int reference) {
    const std::size_t channels = film.channels.size();
    const std::size_t first = pixel * channels;
    const double samples = film.samples[pixel];
    if (film.samples[pixel] < 2) return {samples, 0.0, 0.0};
    double sum = 0.0;
    if (reference >= 0) {
        const std::size_t cell = first + static_cast<std::size_t>(reference);
        sum = film.high[cell] + film.low[cell];
    } else {
        for (std::size_t cell = first; cell < first + channels; ++cell) sum += film.high[cell] + film.low[cell];
        sum /= static_cast<double>(channels);
    }
    const double mean = sum / samples;
    return {samples, mean, std::max(0.0, (total(film.squares.at(pixel)) - sum * mean) / (samples - 1.0))};
}

}  // namespace nemra::core
