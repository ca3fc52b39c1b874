/// A scene that traces nothing: each sample is a number made from pixel, sample and channel, so that any result can be foretold.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <thread>

#include "engine/core/film/arrays.h"
#include "engine/core/render.h"

namespace nemra::test {

class FakeScene : public core::PreparedScene {
public:
    enum class Sensor { xyz, spectral, energy };
    int pixelsWide = 20;
    int pixelsHigh = 12;
    Sensor sensor = Sensor::xyz;
    std::chrono::nanoseconds perSample{0};  ///< what a sample costs
    std::shared_ptr<const node::Node> camera;
    core::QuantityFactors factors{0.25, 1.0e-9, 0.01};

    /// Multiples of 1/64, so that sums are exact.
    static double sample(int x, int y, std::uint32_t index, int channel) {
        std::uint32_t hash = static_cast<std::uint32_t>(x) * 73856093U ^ static_cast<std::uint32_t>(y) * 19349663U ^
                             index * 83492791U ^ static_cast<std::uint32_t>(channel) * 2654435761U;
        hash ^= hash >> 13;
        hash *= 0x5bd1e995U;
        hash ^= hash >> 15;
        return static_cast<double>(hash % 1024) / 64.0;
    }
    static double mean(int x, int y, std::uint32_t samples, int channel) {
        double sum = 0.0;
        for (std::uint32_t i = 0; i < samples; ++i) sum += sample(x, y, i, channel);
        return sum / samples;
    }

    int width() const noexcept override { return pixelsWide; }
    int height() const noexcept override { return pixelsHigh; }
    core::QuantityFactors quantities() const noexcept override { return factors; }
    double offAxis(int x, int) const override { return x == 0 ? 0.5 : 1.0; }
    std::shared_ptr<const node::Node> instrument() const noexcept override { return camera; }
    std::size_t memory() const noexcept override { return 0; }

    using PreparedScene::makeFilm;
    std::unique_ptr<core::Film> makeFilm(Tile tile) const override {
        auto film = std::make_unique<core::Film>();
        film->left = tile.x0;
        film->top = tile.y0;
        film->width = tile.x1 - tile.x0;
        film->height = tile.y1 - tile.y0;
        using core::ChannelKind;
        if (sensor == Sensor::xyz) {
            for (const char* name : {"X", "Y", "Z"}) film->channels.push_back({name, ChannelKind::luminous, 0, 0, "cd.m^-2"});
        } else if (sensor == Sensor::energy) {
            film->channels.push_back({"E", ChannelKind::energy, 0, 0, "W.m^-2.sr^-1"});
        } else {
            for (int nm : {1000, 450, 550, 650}) {
                film->channels.push_back(
                    {std::to_string(nm) + " nm", ChannelKind::spectral, nm * 1e-9, 10e-9, "W.m^-2.sr^-1.nm^-1"});
            }
        }
        core::makeArrays(*film);
        return film;
    }

    Counts render(core::Film& film, Tile tile, std::uint32_t first, std::uint32_t count,
                  const std::atomic<bool>& cancel) const override {
        Counts counts;
        const int channels = static_cast<int>(film.channels.size());
        for (int x = tile.x0; x < tile.x1; ++x) {
            for (int y = tile.y0; y < tile.y1; ++y) {
                for (std::uint32_t i = first; i < first + count; ++i) {
                    if (cancel) return counts;
                    if (perSample.count() > 0) {
                        const auto until = std::chrono::steady_clock::now() + perSample;
                        while (std::chrono::steady_clock::now() < until) {
                        }
                    }
                    const std::size_t pixel = film.pixel(x - film.left, y - film.top);
                    for (int c = 0; c < channels; ++c) film.high[film.cell(x - film.left, y - film.top, c)] += sample(x, y, i, c);
                    const double reference = sample(x, y, i, channels == 3 ? 1 : 0);
                    core::SquareSum squares = film.squares.at(pixel);
                    add(squares, core::squareSum(reference * reference));
                    film.squares.put(pixel, squares);
                    film.depth[pixel] += 2.0;
                    film.samples[pixel] += 1;
                    film.depthSamples[pixel] += 1;
                    ++counts.samples;
                }
            }
        }
        return counts;
    }
};

}  // namespace nemra::test
