// Filters through OpenCL against the same filters on the processor. Without a device these are skipped; PoCL makes one of the
// processor.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <thread>

#include "engine/core/opencl/attempt.h"
#include "engine/core/opencl/run.h"
#include "module/flat/nemra_global.h"
#include "tests/engine/light/render_scene.h"
#include "tests/engine/output/picture_maker.h"

namespace nemra::outputtest {
namespace {

using core::opencl::Attempt;
using core::opencl::Device;
using core::opencl::Source;

class OpenCl : public testing::Test {
protected:
    void SetUp() override {
#ifdef __SANITIZE_THREAD__
        GTEST_SKIP() << "threads of a driver that wasn't built for ThreadSanitizer look like races";
#endif
        if (core::opencl::devices().empty()) GTEST_SKIP() << "there is no OpenCL device on this machine";
    }
    void TearDown() override { nemraGlobalInitialize(false, ""); }
};

/// Noise over several decades with a bright lamp and, if wanted, numbers that aren't finite. X, Y and Z differ.
Filtered scene(int width, int height, bool fast, bool hasHoles) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> exponent(-2.0, 2.0);
    std::vector<double> noise(std::size_t(width) * std::size_t(height) * 3);
    for (double& value : noise) value = std::pow(10.0, exponent(random));
    const auto values = [&](int x, int y, int c) {
        if (x / 4 == 2 && y / 4 == 2) return 1.0e4 + x;
        return noise[std::size_t((y * width + x) * 3 + c)];
    };
    Filtered filtered(film(width, height, xyzChannels(), values, 16, [&](int x, int) { return x < width / 2 ? 20.0 : 2000.0; }),
                      nullptr, fast);
    filtered.picture.planes.push_back({"plane", "", std::vector<float>(std::size_t(width) * std::size_t(height), 2.0F)});
    for (int i = 0; i < width; ++i) filtered.picture.planes[0].values[std::size_t(i * height)] = float(i);
    if (hasHoles) {
        filtered.picture.image.values[100] = std::numeric_limits<float>::quiet_NaN();
        filtered.picture.image.values[200] = std::numeric_limits<float>::infinity();
    }
    return filtered;
}

struct Both {
    Filtered processor;
    Filtered device;
    std::vector<std::string> messages;
};

template <class Make>
Both both(const NodeHandle& filter, Make&& makePicture) {
    Both results{makePicture(), makePicture(), {}};
    EXPECT_TRUE(nemraGlobalInitialize(false, ""));
    results.processor.run(filter);
    EXPECT_TRUE(nemraGlobalInitialize(true, ""));
    lighttest::Messages messages;
    results.device.run(filter);
    results.messages = messages.all;
    return results;
}

/// Both sum positive numbers, the processor mostly in double precision and rounding to single, the device in single precision:
/// what they may differ by is the rounding of some hundred additions, 2^-24 each, relative to the larger of the value and
/// `floor`.
void expectSame(const std::vector<float>& a, const std::vector<float>& b, double floor, const std::string& what) {
    constexpr double kTolerance = 2.0e-5;
    ASSERT_EQ(a.size(), b.size()) << what;
    double worst = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        ASSERT_TRUE(std::isfinite(b[i])) << what << " at " << i;
        worst = std::max(worst, std::abs(double(a[i]) - b[i]) / std::max<double>(std::abs(a[i]), floor));
    }
    EXPECT_LT(worst, kTolerance) << what;
}

void expectSame(const Both& results, double floor, const std::string& what) {
    expectSame(results.processor.picture.image.values, results.device.picture.image.values, floor, what);
    ASSERT_EQ(results.processor.picture.planes.size(), results.device.picture.planes.size());
    for (std::size_t i = 0; i < results.processor.picture.planes.size(); ++i) {
        const core::Plane& plane = results.device.picture.planes[i];
        EXPECT_EQ(plane.name, results.processor.picture.planes[i].name);
        expectSame(results.processor.picture.planes[i].values, plane.values, floor, what + ", a plane");
    }
    ASSERT_EQ(results.messages.size(), 1U) << what << ": " << (results.messages.empty() ? "" : results.messages.back());
    EXPECT_NE(results.messages[0].find("done by OpenCL"), std::string::npos) << results.messages[0];
}

TEST_F(OpenCl, GaussianBlur) {
    for (const auto& [sigma, fast] :
         {std::pair{0.4, false}, {2.0, false}, {2.0, true}, {20.0, false}, {30.0, false}, {500.0, false}}) {
        const NodeHandle filter = make("filter", "gaussianblur", {{"sigma", number(sigma)}});
        for (const auto& [width, height] : {std::pair{67, 41}, {1, 300}, {260, 1}}) {
            const auto results = both(filter, [&] { return scene(width, height, fast, true); });
            expectSame(results, 0.0, std::to_string(sigma) + (fast ? " draft " : " ") + std::to_string(width));
        }
    }
}

TEST_F(OpenCl, NoiseKiller) {
    for (const int patch : {0, 1, 3}) {
        const NodeHandle filter =
            make("filter", "noisekiller", {{"patch_radius", integer(patch)}, {"search_radius", integer(6)}});
        // The exponent is a sum of distances that partly cancel, so its error counts, not that of the weights.
        expectSame(both(filter, [] { return scene(67, 41, false, true); }), 1.0, "patches of " + std::to_string(patch));
        expectSame(both(filter, [] { return scene(5, 90, true, false); }), 1.0, "draft, patches of " + std::to_string(patch));
    }
}

TEST_F(OpenCl, Glare) {
    for (const bool fast : {false, true}) {
        const NodeHandle filter =
            make("filter", "glare", {{"pixel_size", text("viewing")}, {"pixels_per_degree", number(10)}, {"age", number(60)}});
        // A Fourier transform spreads the rounding of the brightest pixels, 1e4, over all: 1e-7 of it on a pixel of 0.01.
        const auto results = both(filter, [&] { return scene(67, 41, fast, true); });
        expectSame(results.processor.picture.image.values, results.device.picture.image.values, 100.0, "glare");
        EXPECT_EQ(results.messages.size(), 1U);
        EXPECT_GT(results.device.at(12, 10), 1.001 * scene(67, 41, false, true).at(12, 10)) << "the lamp's veil";
    }
}

TEST_F(OpenCl, SpectralToHv) {
    std::vector<double> centres;
    for (int nm = 380; nm <= 780; nm += 10) centres.push_back(nm);
    const auto spectra = [&](int width, int height) {
        return Filtered(
            film(width, height, bands(centres, 10), [](int x, int y, int c) { return 1.0 + (x * 31 + y * 17 + c * 7) % 13; }));
    };
    const NodeHandle filter = make("filter", "spectraltohv", {{"ocular_lens", text("aged")}, {"age", number(70)}});
    expectSame(both(filter, [&] { return spectra(13, 29); }), 0.0, "spectra");
    expectSame(both(filter, [&] { return spectra(700, 650); }), 0.0, "more spectra than go to the device at once");
}

TEST_F(OpenCl, ThreadsFilterAtTheSameTime) {
    const NodeHandle blur = make("filter", "gaussianblur", {{"sigma", number(5)}});
    const NodeHandle denoise = make("filter", "noisekiller", {{"search_radius", integer(4)}});
    const Both expectedBlur = both(blur, [] { return scene(67, 41, false, false); });
    const Both expectedDenoise = both(denoise, [] { return scene(67, 41, false, false); });
    std::vector<Filtered> blurred;
    std::vector<Filtered> denoised;
    for (int i = 0; i < 4; ++i) {
        blurred.push_back(scene(67, 41, false, false));
        denoised.push_back(scene(67, 41, false, false));
    }
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < 4; ++i) {
            threads.emplace_back([&, i] { blurred[i].run(blur); });
            threads.emplace_back([&, i] { denoised[i].run(denoise); });
        }
    }
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(blurred[i].picture.image.values, expectedBlur.device.picture.image.values);
        EXPECT_EQ(denoised[i].picture.image.values, expectedDenoise.device.picture.image.values);
    }
}

TEST_F(OpenCl, FailuresAreToldOnceAndLeaveTheWorkToTheProcessor) {
    static constexpr Source kBroken{"broken", "__kernel void broken(__global float* a) { a[0] = nowhere; }"};
    static constexpr Source kSound{"sound", "__kernel void sound(__global float* a) { a[0] = 1.0f; }"};
    ASSERT_TRUE(nemraGlobalInitialize(true, ""));
    lighttest::Messages messages;
    const auto build = [](Device& device) { core::opencl::Run run(device, kBroken); };
    Attempt first("filter/a");
    EXPECT_FALSE(first(build));
    EXPECT_FALSE(first(build));
    EXPECT_FALSE(Attempt("filter/b")(build)) << "it isn't compiled again";
    EXPECT_EQ(messages.all.size(), 1U);
    EXPECT_TRUE(messages.mention("broken can't be built"));
    const auto tooLarge = [](Device& device) { core::opencl::Run(device, kSound).memoryFor<float>(std::size_t{1} << 50); };
    EXPECT_FALSE(Attempt("filter/c")(tooLarge));
    EXPECT_EQ(messages.all.size(), 2U);
    EXPECT_TRUE(messages.mention("hasn't enough memory"));
    // The device is as good as before.
    const auto work = [](Device& device) {
        core::opencl::Run run(device, kSound);
        const auto memory = run.memoryFor<float>(1);
        run.call("sound", 1, 1, memory);
        EXPECT_EQ(run.read<float>(memory, 1).at(0), 1.0F);
    };
    EXPECT_TRUE(Attempt("filter/d")(work));
}

TEST_F(OpenCl, DevicesAreChosenByName) {
    const std::string name = core::opencl::devices().back()->name();
    EXPECT_TRUE(nemraGlobalInitialize(true, name.c_str()));
    ASSERT_TRUE(core::opencl::chosenDevice());
    EXPECT_EQ(core::opencl::chosenDevice()->name(), name);
    lighttest::Messages messages;
    EXPECT_FALSE(nemraGlobalInitialize(true, "no such device"));
    EXPECT_EQ(messages.all.size(), 1U);
    EXPECT_TRUE(messages.mention("no such device"));
    EXPECT_EQ(core::opencl::chosenDevice(), nullptr);
}

}  // namespace
}  // namespace nemra::outputtest
