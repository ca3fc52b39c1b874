/// Rendering a test's scene and reading what came out.
#pragma once

#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

#include "engine/common/log.h"
#include "engine/core/prepare/prepared.h"
#include "tests/engine/light/scene_maker.h"

namespace nemra::lighttest {

/// Mean of a pixel's channel, and its standard error as independent samples would have it; the stratified ones do better.
struct Estimate {
    double mean = 0.0;
    double error = 0.0;
};

inline double value(const core::Film& film, int x, int y, int channel) {
    const std::size_t cell = film.cell(x, y, channel);
    return (film.high[cell] + film.low[cell]) / film.samples[film.pixel(x, y)];
}

inline Estimate estimate(const core::Film& film, int x, int y, int leading) {
    const double n = film.samples[film.pixel(x, y)];
    const double mean = value(film, x, y, leading);
    const double variance =
        std::max(0.0, total(film.squares.at(film.pixel(x, y))) / n - mean * mean) * n / std::max(1.0, n - 1.0);
    return {mean, std::sqrt(variance / n)};
}

struct Rendered {
    std::unique_ptr<core::Film> film;
    std::uint64_t samples = 0;
    std::uint64_t wrong = 0;
};

/// All pixels with samples [first, first + count), in tiles that the threads take in turn.
inline Rendered render(const core::PreparedScene& scene, std::uint32_t count, int threads = 1, int tile = 16,
                       std::uint32_t first = 0) {
    Rendered result{scene.makeFilm()};
    const std::atomic<bool> cancel{false};
    std::atomic<int> next{0};
    std::atomic<std::uint64_t> samples{0}, wrong{0};
    const int down = (scene.height() + tile - 1) / tile;
    const int tiles = down * ((scene.width() + tile - 1) / tile);
    const auto work = [&] {
        for (int t = next++; t < tiles; t = next++) {
            const int x = t / down * tile;
            const int y = t % down * tile;
            const auto counts = scene.render(*result.film, {x, y, x + tile, y + tile}, first, count, cancel);
            samples += counts.samples;
            wrong += counts.wrong;
        }
    };
    std::vector<std::thread> workers;
    for (int i = 1; i < threads; ++i) workers.emplace_back(work);
    work();
    for (auto& worker : workers) worker.join();
    result.samples = samples;
    result.wrong = wrong;
    return result;
}

inline std::shared_ptr<const core::Prepared> prepare(const node::Scene& scene, const core::PrepareOptions& options = {}) {
    return std::make_shared<const core::Prepared>(scene, "", options);
}

/// The one pixel of a scene's camera.
inline Estimate renderPixel(const node::Scene& scene, std::uint32_t samples, const core::PrepareOptions& options = {}) {
    const auto prepared = prepare(scene, options);
    const Rendered result = render(*prepared, samples);
    return estimate(*result.film, 0, 0, prepared->kernelScene().sensor.leading < 0 ? 0 : prepared->kernelScene().sensor.leading);
}

/// Messages that a piece of code gave, as "level source: text".
class Messages {
public:
    Messages() : capture_([this](const log::Message& m) { all.push_back(m.source + ": " + m.text); }) {}
    bool mention(const std::string& part) const {
        for (const std::string& message : all) {
            if (message.find(part) != std::string::npos) return true;
        }
        return false;
    }
    std::vector<std::string> all;

private:
    log::Capture capture_;
};

inline NodeHandle energySensor() { return make("sensor", "energy"); }
inline NodeHandle colorSensor() { return make("sensor", "ciexyz"); }

/// Of any number of responses, which give its channels their names.
inline NodeHandle customSensor(const std::vector<NodeHandle>& responses, Settings settings = {}) {
    NodeHandle sensor = make("sensor", "custom", settings);
    std::string why;
    for (const NodeHandle& response : responses) {
        if (!sensor->addItem(response, why)) throw std::runtime_error(why);
    }
    return sensor;
}

/// Two channels, of which neither stands for a pixel, and with edges inside of a nanometre.
inline NodeHandle twoResponses() {
    return customSensor(
        {make("spectrum", "square", {{"minimum", number(480.4)}, {"maximum", number(530.7)}, {"value", number(0.5)}}, "green"),
         make("spectrum", "tabulated", {{"samples", samples({{580, 0.0}, {600, 1.0}, {640, 0.2}})}}, "red")});
}

}  // namespace nemra::lighttest
