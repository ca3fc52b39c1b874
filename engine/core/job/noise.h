/// How noisy a picture is.
#pragma once

#include <chrono>

#include "engine/core/job/shared_film.h"

namespace nemra::core {

/// The root mean square, over the pixels, of s / (m + 0.01 M). m is the mean of a pixel's luminance, energy or channels (without
/// its sign), s the standard error of m as independent samples would have it, and M the mean of m over the picture, whose
/// hundredth keeps black pixels from counting as infinitely noisy. Infinite as long as a pixel has fewer than 16 samples. Reads
/// the film tile by tile, twice.
double relativeNoise(const SharedFilm& film);

/// Looks at the noise of a render now and then.
class NoiseWatch {
public:
    using Clock = std::chrono::steady_clock;

    /// `wanted` as relativeNoise gives it; 0 or below for never.
    explicit NoiseWatch(double wanted) : wanted_(wanted) {}

    bool isOn() const noexcept { return wanted_ > 0.0; }
    Clock::time_point next() const noexcept { return next_; }
    /// True if the noise is what was wanted, or less. The next look comes so late that all of them take less than 1 % of a
    /// thread's time.
    bool isQuiet(const SharedFilm& film);

private:
    double wanted_;
    Clock::time_point next_ = Clock::now();
};

}  // namespace nemra::core
