/// Results to store, read and merge.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/common/log.h"
#include "engine/core/result/raw.h"
#include "tests/engine/job/fake_scene.h"

namespace nemra::test {

inline std::shared_ptr<core::Raw> makeRaw(const FakeScene& scene, std::uint32_t samples, std::uint32_t first = 0) {
    std::shared_ptr<core::Film> film = scene.makeFilm();
    const std::atomic<bool> cancel{false};
    scene.render(*film, {0, 0, scene.pixelsWide, scene.pixelsHigh}, first, samples, cancel);
    const auto pixels = static_cast<std::uint64_t>(scene.pixelsWide * scene.pixelsHigh);
    return std::make_shared<core::Raw>(film, scene, core::RenderCounts{1.5, pixels * samples, 2});
}

/// A camera with two presets, the second of which has a gain.
inline std::shared_ptr<node::Node> makeCamera() {
    node::registerClasses();
    const auto make = [](const char* family, const char* type, const char* name) {
        return std::make_shared<node::Node>(*node::findClass(family, type), name);
    };
    auto camera = make("instrument", "stdcam", "north view");
    std::string why;
    auto bright = make("output", "rgbimage", "bright");
    auto gain = make("filter", "gain", "gain");
    gain->set("gain", node::Value{0.05}, why);
    bright->addItem(gain, why);
    camera->addItem(make("output", "rgbimage", "plain"), why);
    camera->addItem(bright, why);
    camera->set("exposure_time", node::Value{0.125}, why);
    return camera;
}

inline bool sameFilm(const core::Film& a, const core::Film& b) {
    return a.width == b.width && a.height == b.height && a.high == b.high && a.low == b.low && a.samples == b.samples &&
           a.squares == b.squares && a.depth == b.depth && a.depthSamples == b.depthSamples;
}

/// Keeps this thread's messages while it lives.
struct Messages {
    std::vector<std::string> errors, others;
    log::Capture capture{[this](const log::Message& message) {
        (message.level == NEMRA_LOG_ERROR ? errors : others).push_back(message.source + ": " + message.text);
    }};
};

}  // namespace nemra::test
