/// Scenes of random samples that a test makes up, noisy where it wants them to be.
#pragma once

#include <chrono>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>

#include "tests/engine/job/fake_scene.h"

namespace nemra::test {

/// Uniform in [0, 1): independent for each seed, pixel and sample.
inline double uniform(std::uint32_t seed, int x, int y, std::uint32_t index) {
    std::uint64_t hash = (static_cast<std::uint64_t>(seed) << 32 | index) * 0x9E3779B97F4A7C15U;
    hash ^= (static_cast<std::uint64_t>(x) << 20 | static_cast<std::uint64_t>(y)) * 0xBF58476D1CE4E5B9U;
    for (int i = 0; i < 2; ++i) {
        hash ^= hash >> 31;
        hash *= 0x94D049BB133111EBU;
    }
    return static_cast<double>(hash >> 40) / static_cast<double>(1 << 24);
}

/// A scene of one channel whose samples are what the test says; multiples of 2^-20, so that sums are exact.
class SampledScene final : public FakeScene {
public:
    std::function<double(int x, int y, std::uint32_t index)> value;

    SampledScene() { sensor = Sensor::energy; }
    /// What a pixel's samples cost, so that a render can be cut short.
    std::chrono::nanoseconds perPixel{0};

    Counts render(core::Film& film, Tile tile, std::uint32_t first, std::uint32_t count,
                  const std::atomic<bool>& cancel) const override {
        Counts counts;
        for (int x = tile.x0; x < tile.x1; ++x) {
            for (int y = tile.y0; y < tile.y1 && !cancel; ++y) {
                const auto until = std::chrono::steady_clock::now() + perPixel * count;
                while (perPixel.count() > 0 && std::chrono::steady_clock::now() < until) {
                }
                const std::size_t pixel = film.pixel(x - film.left, y - film.top);
                core::SquareSum squares = film.squares.at(pixel);
                for (std::uint32_t i = first; i < first + count; ++i) {
                    const double sample = value(x, y, i);
                    film.high[pixel] += sample;
                    add(squares, core::squareSum(sample * sample));
                }
                film.squares.put(pixel, squares);
                film.samples[pixel] += count;
                counts.samples += count;
            }
        }
        return counts;
    }
};

/// Quiet but for a quarter of it.
inline std::shared_ptr<SampledScene> unevenScene(std::uint32_t seed) {
    auto scene = std::make_shared<SampledScene>();
    scene->pixelsWide = 64;
    scene->pixelsHigh = 40;
    scene->value = [seed](int x, int y, std::uint32_t i) {
        const double u = uniform(seed, x, y, i);
        return x < 16 ? (u < 0.125 ? 8.0 : 0.0) : 0.96875 + std::ldexp(std::floor(u * 1024.0), -14);
    };
    return scene;
}

}  // namespace nemra::test
