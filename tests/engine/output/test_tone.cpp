// Tone curves against values worked out by hand from the papers' equations.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "tests/engine/output/picture_maker.h"

namespace nemra::outputtest {
namespace {

Filtered fourDecades() {
    return greys(4, 1, [](int x, int) { return std::pow(10.0, x); });
}

void expectRow(const Filtered& filtered, const std::vector<double>& expected) {
    for (std::size_t x = 0; x < expected.size(); ++x) {
        EXPECT_NEAR(filtered.at(int(x), 0), expected[x], 2e-6 + 1e-6 * expected[x]) << "pixel " << x;
    }
}

TEST(Tone, DragoFollowsEquationFour) {
    expectRow(fourDecades().run(make("filter", "drago")), {0.0161154, 0.1170293, 0.4968168, 1.0});
    expectRow(fourDecades().run(make("filter", "drago", {{"bias", number(0.7)}, {"display_luminance", number(200)}})),
              {0.0513323, 0.3591721, 1.2629543, 2.0});
}

TEST(Tone, ReinhardGlobalFollowsEquationFour) {
    expectRow(fourDecades().run(make("filter", "reinhardglobal")), {0.0056609, 0.0539501, 0.3691093, 1.0});
    expectRow(fourDecades().run(make("filter", "reinhardglobal",
                                     {{"key", number(0.36)}, {"white", text("luminance")}, {"white_luminance", number(200)}})),
              {0.0112808, 0.1044511, 0.6492738, 2.9379533});
}

// Curves scale X, Y and Z alike, and neither blackness nor broken numbers spread to other pixels.
TEST(Tone, ChromaticityStaysAndBlackStaysBlack) {
    const auto colors = [](int x, int, int c) {
        if (x == 0) return 0.0;
        return x == 1 ? std::array{40.0, 20.0, 10.0}[std::size_t(c)] : 500.0;
    };
    for (const char* type : {"drago", "reinhardglobal", "reinhardlocal"}) {
        Filtered filtered(film(3, 1, xyzChannels(), colors));
        filtered.run(make("filter", type));
        EXPECT_NEAR(filtered.at(1, 0, 0) / filtered.at(1, 0, 1), 2.0, 1e-5) << type;
        EXPECT_NEAR(filtered.at(1, 0, 2) / filtered.at(1, 0, 1), 0.5, 1e-5) << type;
        EXPECT_GT(filtered.at(1, 0), 0.0F) << type;
        EXPECT_EQ(filtered.at(0, 0), 0.0F) << type;
        Filtered dark(film(3, 1, xyzChannels(), [](int, int, int) { return 0.0; }));
        dark.run(make("filter", type));
        EXPECT_EQ(dark.at(1, 0), 0.0F) << type;
    }
}

// A bright pixel on an even ground: the centre-surround contrast decides how far the surroundings reach.
TEST(Tone, ReinhardLocalChoosesTheScaleByItsContrast) {
    const auto spot = [](int x, int y) { return x == 32 && y == 32 ? 100.0 : 10.0; };
    const auto at = [&](double sharpening, double threshold) {
        return greys(65, 65, spot)
            .run(make("filter", "reinhardlocal", {{"sharpening", number(sharpening)}, {"threshold", number(threshold)}}))
            .at(32, 32);
    };
    EXPECT_NEAR(at(8.0, 0.05), 1.5061099, 2e-4);
    EXPECT_NEAR(at(1.0, 0.3), 0.6775889, 2e-4);
    EXPECT_NEAR(at(8.0, 0.002), 0.6775889, 2e-4);
    const auto even = greys(65, 65, [](int, int) { return 10.0; }).run(make("filter", "reinhardlocal"));
    EXPECT_NEAR(even.at(0, 0), 0.18 / 1.18, 1e-5);
    EXPECT_NEAR(even.at(32, 32), 0.18 / 1.18, 1e-5);
}

TEST(Tone, IsoSensitivityPutsWhiteAtTheSaturationExposure) {
    EXPECT_NEAR(greys(1, 1, [](int, int) { return 4000.0; }).run(make("filter", "isosensitivity")).at(0, 0), 0.5208333, 1e-6);
    // q L t S / (78 N^2) = 0.65 * 1000 * 0.5 * 200 / (78 * 4)
    const NodeHandle manual =
        make("filter", "isosensitivity",
             {{"iso", number(200)}, {"settings", text("manual")}, {"shutter_time", number(0.5)}, {"f_number", number(2)}});
    EXPECT_NEAR(greys(1, 1, [](int, int) { return 1000.0; }).run(manual).at(0, 0), 208.33333, 1e-3);
    const NodeHandle camera =
        make("instrument", "stdcam", {{"aperture", text("lens")}, {"f_number", number(4)}, {"exposure_time", number(0.02)}});
    Filtered filtered(film(1, 1, xyzChannels(), [](int, int, int) { return 100.0; }), camera);
    EXPECT_NEAR(filtered.run(make("filter", "isosensitivity")).at(0, 0), 0.65 * 100 * 0.02 * 100 / (78 * 16), 1e-6);
}

TEST(Tone, HistogramPercentileIsARank) {
    const auto ramp = [] { return greys(101, 1, [](int x, int) { return x + 1.0; }); };
    EXPECT_NEAR(ramp().run(make("filter", "histogramautogain")).at(95, 0), 1.0, 1e-6);  // the 96th of 101 values
    const NodeHandle half = make("filter", "histogramautogain", {{"percentile", number(50)}, {"target", number(0.5)}});
    EXPECT_NEAR(ramp().run(half).at(50, 0), 0.5, 1e-6);
}

// Six decades that occur equally often: nothing is cut, and the cumulative distribution is a straight line, so that
// Ld = (L / Lmin)^(1/3) on a display of two decades.
TEST(Tone, HistogramAdjustmentSpreadsByFrequency) {
    const NodeHandle adjustment = make("filter", "histogramautogain", {{"method", text("adjustment")}});
    auto even = greys(1000, 10, [](int x, int y) { return 0.01 * std::pow(10.0, 6.0 * (x * 10 + y) / 9999.0); });
    even.run(adjustment);
    for (const int x : {100, 500, 900}) {
        const double shown = std::pow(10.0, 2.0 * (x * 10 + 5) / 9999.0);
        EXPECT_NEAR(even.at(x, 5), (shown - 1.0) / 99.0, 0.01 * shown / 99.0) << x;
    }
    // Most pixels nearly alike: their contrast must not grow beyond the scene's own.
    auto crowded = greys(1000, 10, [](int x, int y) {
        const int i = x * 10 + y;
        return i < 9000 ? 10.0 * std::pow(1.2, i / 9000.0) : 0.01 * std::pow(10.0, 6.0 * (i - 9000) / 999.0);
    });
    crowded.run(adjustment);
    const double dark = 1.0 + 99.0 * crowded.at(0, 0);
    const double bright = 1.0 + 99.0 * crowded.at(899, 9);
    EXPECT_GT(bright, dark);
    EXPECT_LE(bright / dark, 1.2 * 1.03);
    // Less range than the display has: one factor, the brightest is white.
    auto little = greys(100, 1, [](int x, int) { return 20.0 + x; });
    little.run(adjustment);
    EXPECT_NEAR(little.at(99, 0), 1.0, 1e-6);
    EXPECT_NEAR(little.at(0, 0), 20.0 / 119.0, 1e-6);
}

}  // namespace
}  // namespace nemra::outputtest
