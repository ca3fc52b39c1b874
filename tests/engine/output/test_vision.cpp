// Responses and vision: spectra to channels, rods, and the light that the eye scatters.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "engine/core/output/eye_scatter.h"
#include "engine/core/output/scotopic.h"
#include "tests/engine/light/render_scene.h"
#include "tests/engine/output/picture_maker.h"

namespace nemra::outputtest {
namespace {

NodeHandle listing(const NodeHandle& filter, const std::vector<NodeHandle>& items) {
    for (const NodeHandle& item : items) {
        std::string why;
        if (!filter->setChild(item, why)) throw std::runtime_error(why);
    }
    return filter;
}

TEST(Vision, CustomResponsesAreIntegralsOverTheBands) {
    const auto spectrum = [] {
        return film(2, 1, bands({500, 510, 520}, 10), [](int x, int, int c) { return (x + 1) * (c + 1.0); });
    };
    const auto flat = [] { return make("spectrum", "uniform", {{"value", number(2)}}, "flat"); };
    Filtered filtered(spectrum());
    filtered.run(listing(make("filter", "spectocustom", {{"efficacy", number(3)}}), {flat()}));
    ASSERT_EQ(filtered.picture.planes.size(), 1U);
    EXPECT_EQ(filtered.picture.planes[0].name, "flat");
    EXPECT_NEAR(filtered.picture.planes[0].values[1], 3 * 2 * 10 * (2 + 4 + 6), 1e-3);
    EXPECT_NEAR(filtered.at(1, 0, 1), 720.0, 1e-3) << "a single response makes a grey";
    EXPECT_NEAR(filtered.at(1, 0, 0) / filtered.at(1, 0, 1), 0.3127 / 0.3290, 1e-5);
    Filtered peak(spectrum());
    peak.run(listing(make("filter", "spectocustom", {{"normalization", text("peak")}}), {flat()}));
    EXPECT_NEAR(peak.picture.planes[0].values[0], 10 * (1 + 2 + 3), 1e-4);
}

TEST(Vision, CustomResponsesNeedSpectralChannels) {
    Filtered filtered = greys(2, 1, [](int, int) { return 7.0; });
    lighttest::Messages messages;
    filtered.run(listing(make("filter", "spectocustom"), {make("spectrum", "uniform", {}, "flat")}));
    EXPECT_EQ(filtered.at(0, 0), 7.0F);
    EXPECT_TRUE(messages.mention("no spectral channels"));
}

TEST(Vision, ScotopicLuminanceFollowsTheTable) {
    // V'(555) = 0.402, so 1 W/(m2 sr) in a narrow band there has 683.4 scotopic cd/m2; V'(507) = 1.
    for (const auto& [nm, expected] : {std::pair{555.0, 0.402 * 1700}, std::pair{507.0, 1700.0}, std::pair{900.0, 0.0}}) {
        Filtered filtered(film(1, 1, bands({nm}, 0.1), [](int, int, int) { return 10.0; }));
        filtered.run(make("filter", "spectraltohv"));
        ASSERT_EQ(filtered.picture.planes.size(), 1U);
        EXPECT_NEAR(filtered.picture.planes[0].values[0], expected, 2e-3 * 1700) << nm;
    }
    EXPECT_NEAR(core::approximateScotopic(95.0, 100.0, 109.0), 257.6, 1e-6);
}

TEST(Vision, AgedLensesYellow) {
    const auto luminance = [](double nm, double age) {
        Filtered filtered(film(1, 1, bands({nm}, 0.1), [](int, int, int) { return 10.0; }));
        const NodeHandle filter = age > 0 ? make("filter", "spectraltohv", {{"ocular_lens", text("aged")}, {"age", number(age)}})
                                          : make("filter", "spectraltohv");
        return double(filtered.run(filter).at(0, 0));
    };
    EXPECT_NEAR(luminance(450, 65) / luminance(450, 0), 0.5134603, 1e-3);
    EXPECT_NEAR(luminance(600, 65) / luminance(600, 0), 0.9454122, 1e-3);
    EXPECT_NEAR(luminance(450, 20) / luminance(450, 0), 1.1387635, 1e-3);
}

TEST(Vision, PurkinjeFollowsTheModel) {
    const auto shift = [](double scale, const NodeHandle& filter) {
        Filtered filtered(film(1, 1, xyzChannels(), [&](int, int, int c) {
            return scale * std::array{0.95, 1.0, 1.09}[std::size_t(c)];
        }));
        filtered.run(filter);
        return std::array{filtered.at(0, 0, 0) / scale, filtered.at(0, 0, 1) / scale, filtered.at(0, 0, 2) / scale};
    };
    const NodeHandle night = make("filter", "purkinje", {{"adaptation", text("fixed")}, {"adaptation_luminance", number(0.01)}});
    const auto dim = shift(0.01, night);
    EXPECT_NEAR(dim[0], 1.8615034, 1e-4);
    EXPECT_NEAR(dim[1], 2.0459565, 1e-4);
    EXPECT_NEAR(dim[2], 3.5154375, 1e-4);
    // By day rods hardly count; without strength not at all.
    const auto day = shift(1.0e5, make("filter", "purkinje"));
    EXPECT_NEAR(day[1], 1.0, 0.01);
    const auto none = shift(0.01, make("filter", "purkinje", {{"strength", number(0)}}));
    EXPECT_NEAR(none[0], 0.95, 1e-5);
    EXPECT_NEAR(none[2], 1.09, 1e-5);
}

TEST(Vision, PointSpreadsOfTheEyeFollowTheirEquations) {
    const std::vector<double> angles{0.01, 0.1, 1, 10, 60};
    const std::vector<double> young{809904.834, 11681.3410, 19.3759079, 0.0628332485, 0.00330797983};
    const std::vector<double> old{751148.884, 12313.5241, 27.9052777, 0.149410264, 0.0104104856};
    for (std::size_t i = 0; i < angles.size(); ++i) {
        EXPECT_NEAR(core::cieGlare(30, 0.5)(angles[i]) / young[i], 1.0, 1e-8);
        EXPECT_NEAR(core::cieGlare(70, 1.2)(angles[i]) / old[i], 1.0, 1e-8);
    }
    EXPECT_NEAR(core::mesopicGlare()(1.0), 19.1457768, 1e-6);
    EXPECT_NEAR(core::scotopicGlare()(3.0), 16.4231149, 1e-6);
    EXPECT_NEAR(core::encircled(core::cieGlare(30, 0.5), 90.0), 1.0323067, 1e-4);
}

/// A lit pixel in the middle of a dark picture, through the eye.
Filtered star(int size, Settings settings, bool fast = false) {
    Filtered filtered = greys(
        size, size, [&](int x, int y) { return x == size / 2 && y == size / 2 ? 1000.0 : 0.0; }, fast);
    return filtered.run(make("filter", "glare", settings)), filtered;
}

TEST(Vision, ScatteredLightHasTheEquationsStrengthAndIsConserved) {
    const Filtered filtered = star(101, {{"pixel_size", text("viewing")}, {"pixels_per_degree", number(2)}});
    const double total = 1.0323067;
    for (const auto& [pixels, degrees] : {std::pair{20, 10.0}, std::pair{40, 20.0}}) {
        const double angle = degrees * std::numbers::pi / 180.0;
        const double solidAngle = std::pow(0.5 * std::numbers::pi / 180.0, 2) * std::sin(angle) / angle;
        const double expected = 1000.0 * core::cieGlare(30, 0.5)(degrees) / total * solidAngle;
        EXPECT_NEAR(filtered.at(50 + pixels, 50) / expected, 1.0, 1e-2) << degrees;
        EXPECT_NEAR(filtered.at(50, 50 - pixels) / expected, 1.0, 1e-2) << degrees;
    }
    double sum = 0.0;
    for (int y = 0; y < 101; ++y) {
        for (int x = 0; x < 101; ++x) sum += filtered.at(x, y);
    }
    // The square of 50.5 degrees has more than the disc of 25.25, less than that of 35.7.
    const auto within = [&](double degrees) { return 1000.0 * core::encircled(core::cieGlare(30, 0.5), degrees) / total; };
    EXPECT_GT(sum, within(25.25) - 1.0);
    EXPECT_LT(sum, within(35.7) + 1.0);
}

TEST(Vision, DraftAndStrengthOfScatteredLight) {
    const Settings settings{{"pixel_size", text("viewing")}, {"pixels_per_degree", number(2)}};
    const Filtered exact = star(100, settings);
    const Filtered draft = star(100, settings, true);
    double far = 0.0;
    double farDraft = 0.0;
    for (int x = 70; x < 80; ++x) far += exact.at(x, 50), farDraft += draft.at(x, 50);
    EXPECT_NEAR(farDraft / far, 1.0, 0.15);
    const Filtered half =
        star(100, {{"pixel_size", text("viewing")}, {"pixels_per_degree", number(2)}, {"strength", number(0.5)}});
    EXPECT_NEAR(half.at(70, 50), 0.5 * exact.at(70, 50), 1e-6);
    EXPECT_NEAR(half.at(50, 50), 500.0 + 0.5 * exact.at(50, 50), 1e-2);
}

TEST(Vision, ScatterTakesTheInstrumentsAnglesOrSaysThatThereAreNone) {
    const NodeHandle camera =
        make("instrument", "idealrectcam", {{"horizontal_fov", number(1.0)}, {"width", integer(101)}, {"height", integer(101)}});
    const auto content = [] {
        return film(101, 101, xyzChannels(), [](int x, int y, int) { return x == 50 && y == 50 ? 1000.0 : 0.0; });
    };
    Filtered seen(content(), camera);
    seen.run(make("filter", "glare"));
    // A hundredth of a degree to a pixel, so half a degree to the edge.
    const double pixel = 2.0 * std::tan(std::numbers::pi / 360.0) / 101.0;
    const double expected = 1000.0 * core::cieGlare(30, 0.5)(40 * pixel * 180.0 / std::numbers::pi) / 1.0323067 * pixel * pixel;
    EXPECT_NEAR(seen.at(90, 50) / expected, 1.0, 1e-2);
    lighttest::Messages messages;
    Filtered blind(content());
    blind.run(make("filter", "glare"));
    EXPECT_EQ(blind.at(50, 50), 1000.0F);
    EXPECT_TRUE(messages.mention("how large a pixel is"));
}

}  // namespace
}  // namespace nemra::outputtest
