/// Pictures with given values for the tests of filters and outputs.
#pragma once

#include <functional>
#include <memory>

#include "engine/core/film/arrays.h"
#include "engine/core/output/picture.h"
#include "tests/engine/light/scene_maker.h"

namespace nemra::outputtest {

using lighttest::flag;
using lighttest::integer;
using lighttest::make;
using lighttest::NodeHandle;
using lighttest::number;
using lighttest::Settings;
using lighttest::text;
using lighttest::vector;

using Channels = std::vector<core::Channel>;

inline Channels xyzChannels() {
    Channels channels;
    for (const char* name : {"X", "Y", "Z"}) channels.push_back({name, core::ChannelKind::luminous, 0, 0, "cd.m^-2"});
    return channels;
}

/// Bands of that width about those wavelengths, nm.
inline Channels bands(const std::vector<double>& centres, double width) {
    Channels channels;
    for (const double nm : centres) {
        channels.push_back(
            {std::to_string(int(nm)) + " nm", core::ChannelKind::spectral, nm * 1e-9, width * 1e-9, "W.m^-2.sr^-1.nm^-1"});
    }
    return channels;
}

using Values = std::function<double(int x, int y, int channel)>;

/// A film whose pixels have those means over `samples` samples, each with that variance of the reference channel.
inline std::shared_ptr<core::Film> film(int width, int height, Channels channels, const Values& values, std::uint32_t samples = 4,
                                        const std::function<double(int, int)>& variance = nullptr) {
    auto film = std::make_shared<core::Film>();
    film->width = width;
    film->height = height;
    film->channels = std::move(channels);
    core::makeArrays(*film);
    film->samples.assign(film->samples.size(), samples);
    const int reference = film->channels.size() == 3 ? 1 : 0;
    for (int x = 0; x < width; ++x) {
        for (int y = 0; y < height; ++y) {
            for (int c = 0; c < int(film->channels.size()); ++c) film->high[film->cell(x, y, c)] = samples * values(x, y, c);
            const double mean = values(x, y, reference);
            film->squares.put(film->pixel(x, y), samples * mean * mean + (samples - 1) * (variance ? variance(x, y) : 0.0));
        }
    }
    return film;
}

/// Carries an instrument to a result.
class NoScene final : public core::PreparedScene {
public:
    std::shared_ptr<const core::Film> content;
    std::shared_ptr<const node::Node> camera;
    core::QuantityFactors factors{};

    int width() const noexcept override { return content->width; }
    int height() const noexcept override { return content->height; }
    core::QuantityFactors quantities() const noexcept override { return factors; }
    std::shared_ptr<const node::Node> instrument() const noexcept override { return camera; }
    std::size_t memory() const noexcept override { return 0; }
    std::unique_ptr<core::Film> makeFilm(Tile) const override { return std::make_unique<core::Film>(*content); }
    Counts render(core::Film&, Tile, std::uint32_t, std::uint32_t, const std::atomic<bool>&) const override { return {}; }
};

inline std::shared_ptr<core::Raw> result(const std::shared_ptr<core::Film>& film, const std::shared_ptr<const node::Node>& camera,
                                         const std::shared_ptr<const node::Node>& output = nullptr) {
    NoScene scene;
    scene.content = film;
    scene.camera = camera;
    auto raw = std::make_shared<core::Raw>(film, scene, core::RenderCounts{1.5, 100, 0});
    if (output) raw->setOutput(output);
    return raw;
}

/// A picture that owns what it is made from.
struct Filtered {
    std::shared_ptr<core::Film> film;
    std::shared_ptr<core::LightView> view;
    std::shared_ptr<core::Raw> raw;
    core::Picture picture;

    explicit Filtered(std::shared_ptr<core::Film> content, const std::shared_ptr<const node::Node>& camera = nullptr,
                      bool fast = false)
        : film(std::move(content)),
          view(std::make_shared<core::LightView>(core::makeLightView(*film, false))),
          raw(result(film, camera)),
          picture{*film, *view, core::toXyz(*film, *view, "cie1931_2deg"), fast, {}, raw.get()} {}

    Filtered& run(const NodeHandle& filter) {
        core::filterClasses().find(filter->type())(*filter, picture);
        return *this;
    }
    float at(int x, int y, int component = 1) const {
        return picture.image.values[3 * std::size_t(y * picture.image.width + x) + std::size_t(component)];
    }
};

/// Greys of equal X, Y and Z.
inline Filtered greys(int width, int height, const std::function<double(int, int)>& luminance, bool fast = false) {
    return Filtered(film(width, height, xyzChannels(), [&](int x, int y, int) { return luminance(x, y); }), nullptr, fast);
}

}  // namespace nemra::outputtest
