#include "engine/core/job/noise.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

#include "engine/core/job/pixel_noise.h"
#include "engine/core/job/thread_time.h"

namespace nemra::core {

namespace {

constexpr std::uint32_t kFewestSamples = 16;  // fewer say little about their own spread
constexpr double kFloor = 0.01;
constexpr double kShortestInterval = 0.25;  // s
constexpr double kIntervalPerLook = 200.0;

}  // namespace

double relativeNoise(const SharedFilm& shared) {
    double level = 0.0;
    double pixels = 0.0;
    std::uint32_t fewest = std::numeric_limits<std::uint32_t>::max();
    eachPixel(shared, [&](const Film& film, std::size_t pixel, int reference, int, int) {
        fewest = std::min(fewest, film.samples[pixel]);
        if (fewest < kFewestSamples) return;
        level += pixelNoise(film, pixel, reference).mean;
        pixels += 1.0;
    });
    if (fewest < kFewestSamples) return std::numeric_limits<double>::infinity();
    const double floor = kFloor * std::abs(level) / pixels;
    double sum = 0.0;
    eachPixel(shared, [&](const Film& film, std::size_t pixel, int reference, int, int) {
        const PixelNoise noise = pixelNoise(film, pixel, reference);
        const double scale = std::abs(noise.mean) + floor;
        if (noise.variance > 0.0) sum += noise.variance / (noise.samples * scale * scale);
    });
    return std::sqrt(sum / pixels);
}

bool NoiseWatch::isQuiet(const SharedFilm& film) {
    const double before = threadTime();
    const double noise = relativeNoise(film);
    const double interval = std::max(kShortestInterval, kIntervalPerLook * (threadTime() - before));
    next_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(interval));
    return noise <= wanted_;
}

}  // namespace nemra::core
