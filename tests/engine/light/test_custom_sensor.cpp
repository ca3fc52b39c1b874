// A sensor whose channels answer as the spectra of its list say, against closed forms.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/core/result/light_view.h"
#include "engine/core/result/quantity_unit.h"
#include "engine/core/spectrum/observer.h"
#include "tests/engine/light/render_scene.h"

namespace nemra::lighttest {
namespace {

NodeHandle band(double from, double to, double value, const char* name) {
    return make("spectrum", "square", {{"minimum", number(from)}, {"maximum", number(to)}, {"value", number(value)}}, name);
}

/// One pixel that sees nothing but a light of that spectral radiance.
SceneMaker lightBefore(const NodeHandle& radiance, const NodeHandle& sensor) {
    SceneMaker made;
    made.add(polygon({{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}}), material(make("bsdf", "black"), emitter(radiance)));
    with(made.setup, "instrument", camera({0, 0, -1}, {0, 0, 0}, 5.0, 1, 1, sensor));
    return made;
}

struct Seen {
    std::vector<core::Channel> channels;
    std::vector<double> values;
};

Seen seen(const NodeHandle& radiance, const NodeHandle& sensor, std::uint32_t samples = 1 << 14) {
    SceneMaker made = lightBefore(radiance, sensor);
    const auto prepared = prepare(made.finish());
    const Rendered result = render(*prepared, samples);
    Seen all{result.film->channels, {}};
    for (int c = 0; c < int(all.channels.size()); ++c) all.values.push_back(value(*result.film, 0, 0, c));
    return all;
}

/// What is left of the sampling of wavelengths, which is stratified over 16384 samples.
constexpr double kNoise = 2.0e-3;

TEST(CustomSensor, ChannelsAreIntegralsOfResponseTimesRadiance) {
    // Light that rises from 1 W/(m2 sr nm) at 400 nm by 0.01 in each nm.
    const NodeHandle slope = make("spectrum", "tabulated", {{"samples", samples({{400, 1.0}, {700, 4.0}})}});
    const auto integral = [](double a, double b) { return (b - a) * (1.0 + 0.01 * (0.5 * (a + b) - 400.0)); };
    const auto responses = [] {
        return std::vector<NodeHandle>{band(450.25, 520.6, 0.5, "cyan"), band(600, 680, 2.0, "red"),
                                       make("spectrum", "triangle", {{"center", number(550)}, {"width", number(60)}}, "green"),
                                       band(500.2, 500.5, 1.0, "line"), band(300, 2000, 0.25, "all")};
    };
    // The triangle is 60 nm wide at half its height and even about 550 nm.
    const std::vector<double> plain{0.5 * integral(450.25, 520.6), 2.0 * integral(600, 680), 60 * 2.5, integral(500.2, 500.5),
                                    0.25 * integral(400, 700)};
    const auto check = [&](const Settings& settings, const std::vector<double>& expected, const char* unit,
                           core::ChannelKind kind) {
        const Seen found = seen(slope, customSensor(responses(), settings));
        ASSERT_EQ(found.channels.size(), 5U);
        EXPECT_EQ(found.channels[0].name, "cyan");
        for (std::size_t c = 0; c < 5; ++c) {
            EXPECT_EQ(found.channels[c].unit, unit);
            EXPECT_EQ(found.channels[c].kind, kind);
            EXPECT_NEAR(found.values[c] / expected[c], 1.0, c == 3 ? 0.03 : kNoise) << unit << " channel " << c;
        }
    };
    check({{"minimum", number(400)}, {"maximum", number(700)}}, plain, "W.m^-2.sr^-1", core::ChannelKind::energy);
    check({{"minimum", number(400)}, {"maximum", number(700)}, {"normalization", text("peak")}},
          {plain[0] / 0.5, plain[1] / 2.0, plain[2], plain[3], integral(400, 700)}, "W.m^-2.sr^-1", core::ChannelKind::energy);
    check({{"minimum", number(400)}, {"maximum", number(640)}, {"normalization", text("area")}},
          {integral(450.25, 520.6) / 70.35, integral(600, 640) / 40.0, 2.5, integral(500.2, 500.5) / 0.3,
           integral(400, 640) / 240.0},
          "W.m^-2.sr^-1.nm^-1", core::ChannelKind::energy);
    check({{"minimum", number(400)}, {"maximum", number(700)}, {"response", text("luminous")}, {"efficacy", number(1700)}},
          {1700 * plain[0], 1700 * plain[1], 1700 * plain[2], 1700 * plain[3], 1700 * plain[4]}, "cd.m^-2",
          core::ChannelKind::luminous);
}

/// With the observer's own functions for responses, what a sensor of that observer measures.
TEST(CustomSensor, ObserversFunctionsGiveTristimulusValues) {
    std::vector<NodeHandle> functions;
    const char* const names[3] = {"X", "Y", "Z"};
    for (int c = 0; c < 3; ++c) {
        const core::SpectralCurve curve = core::matchingFunction(core::Observer::cie1931, c);
        std::vector<std::pair<double, double>> rows;
        for (int nm = 360; nm <= 830; ++nm) rows.emplace_back(nm, curve(nm));
        functions.push_back(make("spectrum", "tabulated", {{"samples", samples(rows)}}, names[c]));
    }
    const NodeHandle warm = make("spectrum", "blackbody", {{"temperature", number(2856)}});
    const Seen own = seen(warm, customSensor(functions, {{"response", text("luminous")}}), 256);
    const Seen usual = seen(warm, colorSensor(), 256);
    for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(own.values[c] / usual.values[c], 1.0, 1.0e-6) << names[c];
}

/// A pixel whose channels have no leading one counts with their mean, sample by sample.
TEST(CustomSensor, VarianceIsThatOfTheMeanOfAllChannels) {
    for (const int channels : {2, 5}) {
        std::vector<NodeHandle> responses;
        for (int i = 0; i < channels; ++i) {
            responses.push_back(band(420 + 50 * i, 480 + 60 * i, 0.3 + 0.2 * i, ("r" + std::to_string(i)).c_str()));
        }
        SceneMaker made = lightBefore(uniform(2.0), customSensor(responses));
        const auto prepared = prepare(made.finish());
        constexpr std::uint32_t kSamples = 64;
        double squares = 0.0;
        for (std::uint32_t i = 0; i < kSamples; ++i) {
            const Rendered one = render(*prepared, 1, 1, 16, i);
            double mean = 0.0;
            for (int c = 0; c < channels; ++c) mean += value(*one.film, 0, 0, c) / channels;
            squares += mean * mean;
        }
        const Rendered whole = render(*prepared, kSamples);
        EXPECT_NEAR(total(whole.film->squares.at(0)) / squares, 1.0, 1.0e-5) << channels << " channels";
        EXPECT_GT(core::makeLightView(*whole.film, false).meta[int(core::MetaChannel::variance)][0], 0.0);
    }
}

TEST(CustomSensor, NamesAreUniqueAndNeverEmpty) {
    SceneMaker made =
        lightBefore(uniform(1.0), customSensor({band(400, 500, 1, "a"), band(500, 600, 1, "a"), band(500, 600, 1, ""),
                                                make("spectrum", "linked", {{"node", text("far")}}, "")}));
    made.finish();
    made.scene.nodes.push_back(band(600, 700, 1, "far"));
    const Messages messages;
    const auto film = prepare(made.scene)->makeFilm();
    ASSERT_EQ(film->channels.size(), 4U);
    EXPECT_EQ(film->channels[1].name, "a_2");
    EXPECT_EQ(film->channels[2].name, "response 3");
    EXPECT_EQ(film->channels[3].name, "far");
    EXPECT_TRUE(messages.mention("a_2"));
}

TEST(CustomSensor, WhatCantBeMeasuredIsRefused) {
    const auto refused = [](const NodeHandle& sensor) {
        SceneMaker made = lightBefore(uniform(1.0), sensor);
        const Messages messages;
        const bool none = core::prepareScene(made.finish(), "") == nullptr;
        return none && messages.all.size() == 1 ? messages.all.front() : "accepted";
    };
    EXPECT_NE(refused(customSensor({})).find("lists no response"), std::string::npos);
    EXPECT_NE(
        refused(customSensor({band(400, 500, 1, "a")}, {{"minimum", number(500)}, {"maximum", number(500)}})).find("minimum"),
        std::string::npos);
    EXPECT_NE(
        refused(customSensor({band(850, 900, 1, "infrared")}, {{"normalization", text("peak")}})).find("infrared: this response"),
        std::string::npos);
    // As it is given it may be dark.
    EXPECT_EQ(refused(customSensor({band(850, 900, 1, "infrared")})), "accepted");
}

TEST(CustomSensor, UnitsOfQuantities) {
    const core::Channel mean{"m", core::ChannelKind::energy, 0.0, 0.0, "W.m^-2.sr^-1.nm^-1"};
    EXPECT_EQ(core::unitOf(mean, NEMRA_QUANTITY_SENSOR_POWER), "W.nm^-1");
    const core::Channel luminous{"m", core::ChannelKind::luminous, 0.0, 0.0, "cd.m^-2"};
    EXPECT_EQ(core::unitOf(luminous, NEMRA_QUANTITY_SENSOR_IRRADIANCE), "lx");
}

}  // namespace
}  // namespace nemra::lighttest
