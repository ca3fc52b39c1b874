// Filters on neighbourhoods and sizes, against values worked out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "engine/core/output/resample.h"
#include "tests/engine/light/render_scene.h"
#include "tests/engine/output/picture_maker.h"

namespace nemra::outputtest {
namespace {

double sumOf(const Filtered& filtered) {
    double sum = 0.0;
    for (std::size_t i = 1; i < filtered.picture.image.values.size(); i += 3) sum += filtered.picture.image.values[i];
    return sum;
}

Filtered impulse(int width, int height, bool fast = false) {
    return greys(
        width, height, [=](int x, int y) { return x == width / 2 && y == height / 2 ? 1.0 : 0.0; }, fast);
}

TEST(PictureFilters, BlurIsTheGaussianOverThePixels) {
    const auto blurred = impulse(41, 41).run(make("filter", "gaussianblur"));
    EXPECT_NEAR(blurred.at(20, 20), 0.0389718, 5e-6);
    EXPECT_NEAR(blurred.at(23, 20), 0.0129484, 5e-6);
    EXPECT_NEAR(blurred.at(20, 17), 0.0129484, 5e-6);
    EXPECT_NEAR(sumOf(blurred), 1.0, 1e-5);
    const auto draft = impulse(41, 41, true).run(make("filter", "gaussianblur"));
    EXPECT_NEAR(draft.at(20, 20), 0.0389718, 0.004);
    EXPECT_NEAR(sumOf(draft), 1.0, 1e-5);
    // Wide ones are boxes too: the variance must still be that of the Gaussian.
    const auto wide = impulse(601, 3).run(make("filter", "gaussianblur", {{"sigma", number(40)}}));
    double sum = 0.0;
    double squares = 0.0;
    for (int x = 0; x < 601; ++x) {
        sum += wide.at(x, 1);
        squares += wide.at(x, 1) * std::pow(x - 300, 2);
    }
    EXPECT_NEAR(std::sqrt(squares / sum), 40.0, 0.8);
    // An even picture stays even up to its edges.
    const auto even = greys(9, 5, [](int, int) { return 3.0; }).run(make("filter", "gaussianblur", {{"sigma", number(5)}}));
    EXPECT_NEAR(even.at(0, 0), 3.0, 1e-5);
}

TEST(PictureFilters, IlluminanceOfDiffuseSurfaces) {
    EXPECT_NEAR(greys(1, 1, [](int, int) { return 100.0; }).run(make("filter", "illuminance")).at(0, 0), 628.318531, 1e-3);
    Filtered measured(film(1, 1, xyzChannels(), [](int, int, int) { return 100.0; }));
    core::RawParts parts = measured.raw->parts();
    parts.factors = {1.0};
    parts.factors[NEMRA_QUANTITY_SCENE_IRRADIANCE] = 1.0;
    const core::Raw lux(parts);
    measured.picture.raw = &lux;
    EXPECT_NEAR(measured.run(make("filter", "illuminance")).at(0, 0), 100.0, 1e-4) << "lux already";
}

TEST(PictureFilters, ResizeKernels) {
    // The mean over the area of the new pixels: 5 pixels to 2 are 2.5 each.
    auto box = greys(5, 1, [](int x, int) { return std::pow(2.0, x); });
    box.run(make("filter", "resize", {{"size", text("pixels")}, {"width", integer(2)}, {"height", integer(1)}}));
    EXPECT_NEAR(box.at(0, 0), (1 + 2 + 0.5 * 4) / 2.5, 1e-5);
    EXPECT_NEAR(box.at(1, 0), (0.5 * 4 + 8 + 16) / 2.5, 1e-5);
    // Twice as large: new pixels lie 0.25, 0.75 and 1.25 pixels from the lit one.
    const auto weights = [](const char* kernel) {
        auto filtered = impulse(21, 1);
        filtered.run(make("filter", "resize",
                          {{"size", text("pixels")}, {"width", integer(42)}, {"height", integer(1)}, {"kernel", text(kernel)}}));
        EXPECT_EQ(filtered.picture.image.width, 42);
        return std::array{filtered.at(21, 0), filtered.at(22, 0), filtered.at(23, 0)};
    };
    const auto expectWeights = [](const std::array<float, 3>& got, double a, double b, double c, const char* kernel) {
        EXPECT_NEAR(got[0], a, 2e-5) << kernel;
        EXPECT_NEAR(got[1], b, 2e-5) << kernel;
        EXPECT_NEAR(got[2], c, 2e-5) << kernel;
    };
    expectWeights(weights("bilinear"), 0.75, 0.25, 0.0, "bilinear");
    expectWeights(weights("mitchell"), 0.7821181, 0.2560764, -0.0234375, "mitchell");
    expectWeights(weights("lanczos"), 0.8927708, 0.2710106, -0.1332746, "lanczos");
    for (const char* kernel : {"box", "bilinear", "mitchell", "lanczos"}) {
        const auto even = core::resample(std::vector<float>(35, 2.0F), 7, 5, 1, 3, 11, kernel);
        ASSERT_EQ(even.size(), 33U);
        for (const float value : even) EXPECT_NEAR(value, 2.0, 1e-5) << kernel;
    }
}

TEST(PictureFilters, ResizeRefusesWhatNoMemoryHolds) {
    auto filtered = impulse(3, 3);
    lighttest::Messages messages;
    filtered.run(make("filter", "resize", {{"size", text("pixels")}, {"width", integer(65536)}, {"height", integer(65536)}}));
    EXPECT_EQ(filtered.picture.image.width, 3);
    EXPECT_TRUE(messages.mention("too large"));
}

TEST(PictureFilters, SphereResolutionIsThatOfTheEquator) {
    // 181 rows of a degree: row 30 lies at a latitude of 60 degrees, where a pixel spans half as much as at the equator.
    auto filtered = greys(360, 181, [](int x, int y) { return x == 0 && (y == 30 || y == 90) ? 1.0 : 0.0; });
    filtered.run(make("filter", "sphereresolutionfix"));
    const double span = 1.0 / std::cos((0.5 - 30.5 / 181.0) * std::numbers::pi);
    EXPECT_NEAR(filtered.at(0, 30), 1.0 / span, 1e-5);
    EXPECT_NEAR(filtered.at(1, 30), (0.5 * span - 0.5) / span, 1e-5);
    EXPECT_NEAR(filtered.at(359, 30), (0.5 * span - 0.5) / span, 1e-5) << "the parallel is closed";
    EXPECT_NEAR(filtered.at(0, 90), 1.0, 1e-5);
    EXPECT_NEAR(sumOf(filtered), 2.0, 1e-4);
    auto part = greys(360, 181, [](int x, int y) { return x == 0 && y == 30 ? 1.0 : 0.0; });
    part.run(make("filter", "sphereresolutionfix", {{"minimum_latitude", number(70)}}));
    EXPECT_EQ(part.at(0, 30), 1.0F);
}

TEST(PictureFilters, DenoiserWeighsByThePapersDistance) {
    // Two pixels of 1 and 2, variance of their means 0.25: d2 = (1 - 0.5) / (k^2 0.5) = 1 with k = 1, so the weight is 1 / e.
    const auto filtered =
        Filtered(film(
                     2, 1, xyzChannels(), [](int x, int, int) { return x + 1.0; }, 4, [](int, int) { return 1.0; }))
            .run(make("filter", "noisekiller",
                      {{"strength", number(1)},
                       {"patch_radius", integer(0)},
                       {"search_radius", integer(1)},
                       {"outliers", text("keep")}}));
    EXPECT_NEAR(filtered.at(0, 0), 1.2689414, 1e-5);
    EXPECT_NEAR(filtered.at(1, 0), (2 + std::exp(-1.0)) / (1 + std::exp(-1.0)), 1e-5);
}

TEST(PictureFilters, DenoiserTakesNoiseAndLeavesEdges) {
    constexpr int kSize = 64;
    constexpr double kNoise = 0.1;  // standard error of a pixel
    std::mt19937 random(7);
    std::normal_distribution<double> normal(0.0, kNoise);
    std::vector<double> noise(kSize * kSize);
    for (double& value : noise) value = normal(random);
    const auto truth = [](int x) { return x < kSize / 2 ? 1.0 : 2.0; };
    const auto values = [&](int x, int y, int) { return truth(x) + noise[std::size_t(y * kSize + x)]; };
    const auto error = [&](const Filtered& filtered, int from, int to) {
        double squares = 0.0;
        for (int x = from; x < to; ++x) {
            for (int y = 0; y < kSize; ++y) squares += std::pow(filtered.at(x, y) - truth(x), 2);
        }
        return std::sqrt(squares / ((to - from) * kSize));
    };
    for (const bool fast : {false, true}) {
        Filtered filtered(film(kSize, kSize, xyzChannels(), values, 16, [](int, int) { return 16 * kNoise * kNoise; }), nullptr,
                          fast);
        filtered.run(make("filter", "noisekiller"));
        EXPECT_LT(error(filtered, 0, kSize), kNoise / (fast ? 1.8 : 3.0)) << fast;
        EXPECT_LT(error(filtered, kSize / 2 - 1, kSize / 2 + 1), kNoise / 1.5) << "the edge, fast " << fast;
        EXPECT_NEAR(sumOf(filtered) / (kSize * kSize), 1.5, 0.01);
    }
}

// Pixels without any variance, such as a lamp, are infinitely far from others by that distance; sums over the patches behind them
// must not suffer.
TEST(PictureFilters, DenoiserWorksBesidePixelsWithoutVariance) {
    const auto isLamp = [](int x, int y) { return x >= 8 && x < 12 && y >= 8 && y < 12; };
    std::mt19937 random(11);
    std::normal_distribution<double> normal(0.0, 0.1);
    std::vector<double> noise(48 * 48);
    for (double& value : noise) value = normal(random);
    const auto values = [&](int x, int y, int) { return isLamp(x, y) ? 1.0e6 : 1.0 + noise[std::size_t(y * 48 + x)]; };
    Filtered filtered(film(48, 48, xyzChannels(), values, 16, [&](int x, int y) { return isLamp(x, y) ? 0.0 : 0.16; }));
    filtered.run(make("filter", "noisekiller", {{"outliers", text("keep")}}));
    EXPECT_NEAR(filtered.at(10, 10), 1.0e6, 1.0);
    double squares = 0.0;
    for (int y = 20; y < 48; ++y) {
        for (int x = 20; x < 48; ++x) squares += std::pow(filtered.at(x, y) - 1.0, 2);
    }
    EXPECT_LT(std::sqrt(squares / (28 * 28)), 0.1 / 3.0);
}

TEST(PictureFilters, DenoiserCutsLonePixelsButNotLamps) {
    const auto values = [](int x, int y, int) {
        return (x == 5 && y == 5) || (x >= 20 && x < 24 && y >= 5 && y < 9) ? 1.0e4 : 1.0;
    };
    Filtered filtered(film(32, 16, xyzChannels(), values, 4, [](int, int) { return 0.01; }));
    filtered.run(make("filter", "noisekiller"));
    EXPECT_LT(filtered.at(5, 5), 11.0);
    EXPECT_NEAR(filtered.at(21, 6), 1.0e4, 1.0);
    EXPECT_NEAR(filtered.at(20, 5), 1.0e4, 1.0) << "a corner has three bright neighbours of eight";
}

NodeHandle withImage(const NodeHandle& filter, int width, int height, const std::vector<float>& pixels, double scale = 1.0) {
    const NodeHandle image =
        make("image", "inline",
             {{"width", integer(width)}, {"height", integer(height)}, {"color_space", text("xyz")}, {"scale", number(scale)}});
    std::string why;
    if (!image->setRawSlot("pixels", {pixels}, why)) throw std::runtime_error(why);
    return lighttest::with(filter, "image", image);
}

TEST(PictureFilters, MergeCombinesPixelByPixel) {
    const std::vector<float> other{1, 2, 3, 40, 50, 60};
    const auto merged = [&](const Settings& settings) {
        return greys(2, 1, [](int, int) { return 10.0; }).run(withImage(make("filter", "merge", settings), 2, 1, other, 2.0));
    };
    EXPECT_NEAR(merged({{"weight", number(0.25)}}).at(1, 0, 1), 0.75 * 10 + 0.25 * 100, 1e-4);
    EXPECT_NEAR(merged({{"operation", text("add")}, {"factor", number(-1)}}).at(1, 0, 2), 10 - 120, 1e-4);
    EXPECT_NEAR(merged({{"operation", text("multiply")}}).at(0, 0, 2), 60, 1e-4);
    EXPECT_NEAR(merged({{"operation", text("difference")}}).at(0, 0, 0), 8, 1e-4);
    EXPECT_NEAR(merged({{"operation", text("maximum")}}).at(1, 0, 0), 80, 1e-4);
    EXPECT_NEAR(merged({{"operation", text("maximum")}}).at(0, 0, 2), 10, 1e-4) << "by luminance, all three together";
    lighttest::Messages messages;
    auto odd = greys(3, 1, [](int, int) { return 10.0; });
    odd.run(withImage(make("filter", "merge"), 2, 1, other));
    EXPECT_EQ(odd.at(1, 0), 10.0F);
    EXPECT_TRUE(messages.mention("2 x 1 pixels, not 3 x 1"));
}

TEST(PictureFilters, WatermarkStandsInItsCorner) {
    const auto marked = [](const char* place) {
        const NodeHandle words = make("text", "default", {{"content", text("I{width}")}});
        const NodeHandle filter =
            make("filter", "watermark",
                 {{"place", text(place)}, {"size", number(20)}, {"margin", number(2)}, {"opacity", number(0.5)}});
        return greys(100, 50, [](int, int) { return 0.2; }).run(lighttest::with(filter, "text", words));
    };
    const auto lit = [](const Filtered& filtered, int x0, int y0, int x1, int y1) {
        int count = 0;
        for (int y = y0; y < y1; ++y) {
            for (int x = x0; x < x1; ++x) count += filtered.at(x, y) > 0.2001F;
        }
        return count;
    };
    const auto corner = marked("bottom_right");
    const int all = lit(corner, 0, 0, 100, 50);
    EXPECT_GT(all, 30) << "letters of I100";
    EXPECT_EQ(lit(corner, 99 - 24, 49 - 9, 99, 49), all) << "four letters of six dots, a line of nine";
    EXPECT_EQ(lit(marked("top_left"), 1, 1, 25, 10), all);
    float most = 0.0F;
    for (int x = 75; x < 99; ++x) most = std::max(most, corner.at(x, 43));
    EXPECT_NEAR(most, 0.5 * 0.2 + 0.5 * 1.0, 1e-4);
    // A picture of 2 x 2 pixels, ten pixels high.
    const NodeHandle logo =
        make("filter", "watermark",
             {{"content", text("image")}, {"place", text("center")}, {"size", number(20)}, {"opacity", number(1)}});
    auto stamped = greys(100, 50, [](int, int) { return 0.2; });
    stamped.run(withImage(logo, 2, 2, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(lit(stamped, 0, 0, 100, 50), 100);
    EXPECT_NEAR(stamped.at(50, 25), 1.0, 1e-5);
}

}  // namespace
}  // namespace nemra::outputtest
