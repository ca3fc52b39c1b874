#include <gtest/gtest.h>

#include <numbers>

#include "tests/engine/light/render_scene.h"

namespace nemra::lighttest {
namespace {

constexpr double kPi = std::numbers::pi;

NodeHandle glow(double radiance) {
    return material(make("bsdf", "black"), emitter(uniform(radiance / 470.0), {{"side", text("both")}}));
}

/// Radiance doesn't depend on distance, tilt, resolution or focal length.
TEST(Camera, RadianceIsInvariant) {
    for (const double distance : {0.5, 5.0, 50.0}) {
        for (const double tiltDeg : {0.0, 30.0, 60.0}) {
            for (const double focal : {10.0, 50.0, 200.0}) {
                const double tilt = tiltDeg * kPi / 180.0;
                SceneMaker made;
                const double far = 1.0e3 * distance;
                made.add(polygon({{-far, -far * std::cos(tilt), -far * std::sin(tilt)},
                                  {far, -far * std::cos(tilt), -far * std::sin(tilt)},
                                  {far, far * std::cos(tilt), far * std::sin(tilt)},
                                  {-far, far * std::cos(tilt), far * std::sin(tilt)}}),
                         glow(500.0));
                with(made.setup, "instrument",
                     with(make("instrument", "stdcam",
                               {{"position", vector(0, 0, -distance)},
                                {"target", vector(0, 0, 0)},
                                {"focal_length", number(focal)},
                                {"film_width", number(8)},
                                {"film_height", number(6)},
                                {"width", integer(16)},
                                {"height", integer(12)}}),
                          "sensor", energySensor()));
                const Rendered result = render(*prepare(made.finish()), 1);
                for (int x = 0; x < 16; ++x) {
                    for (int y = 0; y < 12; ++y) EXPECT_NEAR(value(*result.film, x, y, 0), 500.0, 5.0e-3);
                }
            }
        }
    }
}

/// The camera looks along +z with +y up: +x is on the left, row 0 is at the top. Both cameras frame alike.
TEST(Camera, OrientationAndFraming) {
    for (const bool film : {true, false}) {
        SceneMaker made;
        made.add(polygon({{0.2, 0.3, 1}, {0.4, 0.3, 1}, {0.4, 0.4, 1}, {0.2, 0.4, 1}}), glow(1.0));
        const NodeHandle instrument = film ? make("instrument", "stdcam",
                                                  {{"target", vector(0, 0, 1)},
                                                   {"focal_length", number(18)},
                                                   {"film_width", number(36)},
                                                   {"film_height", number(36)},
                                                   {"width", integer(20)},
                                                   {"height", integer(20)}})
                                           : make("instrument", "idealrectcam",
                                                  {{"target", vector(0, 0, 1)},
                                                   {"horizontal_fov", number(90)},
                                                   {"width", integer(20)},
                                                   {"height", integer(20)}});
        with(made.setup, "instrument", with(instrument, "sensor", energySensor()));
        const Rendered result = render(*prepare(made.finish()), 1);
        for (int x = 0; x < 20; ++x) {
            for (int y = 0; y < 20; ++y) {
                const bool inside =
                    x >= 6 && x < 8 && y >= 6 && y < 7;  // x in 0.2 .. 0.4 lies 0.8 .. 0.6 from the left edge of 2
                EXPECT_NEAR(value(*result.film, x, y, 0), inside ? 1.0 : 0.0, 1.0e-5) << x << ' ' << y;
                EXPECT_EQ(result.film->depthSamples[result.film->pixel(x, y)], inside ? 1U : 0U);
            }
        }
        const double depth = result.film->depth[result.film->pixel(6, 6)];
        EXPECT_GT(depth, std::sqrt(1.0 + 0.3 * 0.3 + 0.3 * 0.3));
        EXPECT_LT(depth, std::sqrt(1.0 + 0.4 * 0.4 + 0.4 * 0.4));
    }
}

NodeHandle lensCamera(double number_, double focus, int width, int height, double film) {
    return with(make("instrument", "stdcam",
                     {{"position", vector(0, 0, 0)},
                      {"target", vector(0, 0, 1)},
                      {"focal_length", number(50)},
                      {"film_width", number(film)},
                      {"film_height", number(film * height / width)},
                      {"width", integer(width)},
                      {"height", integer(height)},
                      {"aperture", text("lens")},
                      {"f_number", number(number_)},
                      {"focus_distance", number(focus)}}),
                "sensor", energySensor());
}

/// Irradiance on axis of an aplanatic lens focused far away, pi L / (4 N^2); nearer focus works at a larger f-number.
TEST(Camera, SensorIrradianceOfTheLens) {
    for (const auto& [n, exact] : {std::pair{1.4, 400.71335}, {2.0, 196.34954}, {4.0, 49.087385}, {8.0, 12.271846}}) {
        SceneMaker made;
        with(made.setup, "instrument", lensCamera(n, 1.0e6, 10, 10, 10));
        const auto prepared = prepare(made.finish());
        EXPECT_NEAR(prepared->quantities().sensorIrradiance * 1000.0, exact, 1.0e-3 * exact);
        EXPECT_NEAR(prepared->quantities().sensorPower / prepared->quantities().sensorIrradiance, 1.0e-6, 1.0e-12);
    }
    SceneMaker near;
    with(near.setup, "instrument", lensCamera(2.0, 0.1, 10, 10, 10));  // life size: the working f-number is twice the marked one
    EXPECT_NEAR(prepare(near.finish())->quantities().sensorIrradiance, kPi / 64.0, 1.0e-9);
    SceneMaker pinhole;
    EXPECT_EQ(prepare(pinhole.finish())->quantities().sensorIrradiance, 0.0);
}

/// A point out of focus becomes a uniform disc of diameter (f / N) |S2 - S1| / S2 * f / (S1 - f).
TEST(Camera, CircleOfConfusion) {
    for (const auto& [distance, diameter] :
         {std::pair{1.0, 0.64102564}, {1.5, 0.21367521}, {4.0, 0.32051282}, {10.0, 0.51282051}}) {
        const int pixels = 32;
        const double film = diameter * 1.6;
        SceneMaker made;
        const double r = 1.0e-4 * distance;  // small beside the blur
        made.add(polygon({{-r, -r, distance}, {r, -r, distance}, {r, r, distance}, {-r, r, distance}}), glow(1.0));
        with(made.setup, "instrument", lensCamera(2.0, 2.0, pixels, pixels, film));
        const Rendered result = render(*prepare(made.finish()), 2048, 2);
        // First and second moment of the blur: a uniform disc of diameter c has a mean square radius of c^2 / 8.
        double sum = 0.0, moment = 0.0;
        for (int x = 0; x < pixels; ++x) {
            for (int y = 0; y < pixels; ++y) {
                const double dx = (x + 0.5) / pixels * film - film / 2, dy = (y + 0.5) / pixels * film - film / 2;
                const double v = value(*result.film, x, y, 0);
                sum += v;
                moment += v * (dx * dx + dy * dy);
                EXPECT_TRUE(v == 0.0 || std::hypot(dx, dy) < diameter / 2 + 2.0 * film / pixels);
            }
        }
        EXPECT_NEAR(std::sqrt(8.0 * moment / sum), diameter, 0.03 * diameter) << distance;
    }
}

TEST(Camera, RefusesWhatCannotBeSeenThrough) {
    const auto refused = [](Settings settings, const std::string& word) {
        SceneMaker made;
        with(made.setup, "instrument", make("instrument", "stdcam", settings));
        Messages messages;
        EXPECT_EQ(core::prepareScene(made.finish(), ""), nullptr);
        EXPECT_EQ(messages.all.size(), 1U);
        EXPECT_TRUE(messages.mention("instrument/stdcam")) << word;
        EXPECT_TRUE(messages.mention(word)) << messages.all.front();
    };
    refused({{"target", vector(0, 0, 0)}}, "looks nowhere");
    refused({{"up", vector(0, 0, 2)}}, "up");
    refused({{"aperture", text("lens")}, {"focus_distance", number(0.04)}}, "focused nearer");
    refused({{"width", integer(60000)}, {"height", integer(60000)}}, "limit");
    SceneMaker none;
    Messages messages;
    EXPECT_EQ(core::prepareScene(none.scene, ""), nullptr);
    EXPECT_TRUE(messages.mention("has no setup"));
    EXPECT_EQ(core::prepareScene(none.finish(), "other"), nullptr);
    EXPECT_TRUE(messages.mention("other"));
}

}  // namespace
}  // namespace nemra::lighttest
