// Adaptive sampling: more samples where it is noisy, and no pixel wrong for it.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "engine/core/job/adaptive.h"
#include "tests/engine/job/recorder.h"
#include "tests/engine/job/sampled_scene.h"

namespace nemra::test {
namespace {

constexpr std::uint32_t kPilot = core::kPilotSamples;

/// Renders to so many samples per pixel and gives the result's handle.
nemra_raw_t* rendered(const std::shared_ptr<SampledScene>& scene, double spp, bool adaptive, int threads = 2) {
    Recorder& recorder = makeRecorder();
    auto renderer = std::make_shared<core::Renderer>();
    recorder.attach(*renderer);
    renderer->setParameter("num_threads", std::to_string(threads));
    renderer->setParameter("adaptive", adaptive ? "true" : "false");
    renderer->addLocalNode();
    renderer->setHalt({0.0, spp, NEMRA_HALT_STOPS});
    EXPECT_TRUE(renderer->start(loaderOf(scene)));
    EXPECT_TRUE(recorder.waitFor([](const Recorder& r) { return r.finished.size() == 1; }, 60000));
    return recorder.finished.empty() ? nullptr : recorder.finished[0];
}

double valueAt(nemra_raw_t* raw, int x, int y, const char* channel = "E") {
    return nemraRawGetLightQuantity(raw, nemraRawChannelIndex(raw, channel), x, y, 0);
}

template <class Look>
void eachPixel(const FakeScene& scene, Look&& look) {
    for (int x = 0; x < scene.pixelsWide; ++x) {
        for (int y = 0; y < scene.pixelsHigh; ++y) look(x, y);
    }
}

/// Dim, with one very bright sample in 4096: where the bright ones fall is chance alone.
std::shared_ptr<SampledScene> rareScene(std::uint32_t seed) {
    auto scene = std::make_shared<SampledScene>();
    scene->pixelsWide = scene->pixelsHigh = 32;
    scene->value = [seed](int x, int y, std::uint32_t i) { return uniform(seed, x, y, i) < 1.0 / 4096.0 ? 4096.0 : 0.0625; };
    return scene;
}
constexpr double kRareMean = 1.0 + 0.0625 * 4095.0 / 4096.0;

struct Spread {
    double mean, error;
    static Spread of(const std::vector<double>& values) {
        double mean = 0.0, squares = 0.0;
        const auto n = static_cast<double>(values.size());
        for (const double value : values) mean += value / n;
        for (const double value : values) squares += std::pow(value - mean, 2);
        return {mean, std::sqrt(squares / (n - 1.0) / n)};
    }
};

TEST(Adaptive, RareBrightSamplesDoNotMakeItWrong) {
    std::vector<double> adaptive, naive;
    for (std::uint32_t seed = 1; seed <= 120; ++seed) {
        const auto scene = rareScene(seed);
        nemra_raw_t* raw = rendered(scene, 64, true);
        ASSERT_NE(raw, nullptr);
        double sum = 0.0;
        eachPixel(*scene, [&](int x, int y) { sum += valueAt(raw, x, y) / 1024.0; });
        adaptive.push_back(sum);
        nemraRawRelease(&raw);

        // What comes of giving a tile more samples for its own bright ones.
        sum = 0.0;
        for (int tile = 0; tile < 16; ++tile) {
            const auto inTile = [&](std::uint32_t count) {
                double total = 0.0;
                for (int p = 0; p < 64; ++p) {
                    for (std::uint32_t i = 0; i < count; ++i)
                        total += scene->value(tile % 4 * 8 + p % 8, tile / 4 * 8 + p / 8, i);
                }
                return total / count;
            };
            const bool sawOne = inTile(kPilot) > 64.0;
            sum += inTile(kPilot + (sawOne ? 8 : 0.25) * (64 - kPilot)) / 1024.0;
        }
        naive.push_back(sum);
    }
    const Spread ours = Spread::of(adaptive), theirs = Spread::of(naive);
    EXPECT_NEAR(ours.mean, kRareMean, 3.5 * ours.error);
    EXPECT_LT(ours.error, 0.1 * kRareMean) << "or the test says nothing";
    EXPECT_LT(theirs.mean, kRareMean - 10.0 * theirs.error) << "the fault that this is about would show";
}

TEST(Adaptive, ATilesShareDoesNotDependOnItsOwnSamples) {
    const auto sharesWith = [](int changed) {
        constexpr int side = core::kAdaptiveTile;
        const auto scene = rareScene(3);
        scene->pixelsWide = scene->pixelsHigh = 4 * side;
        scene->value = [&, inner = scene->value](int x, int y, std::uint32_t i) {
            const int tile = y / side * 4 + x / side;
            return (tile == changed ? 37.0 : 1.0) * inner(x, y, i) + uniform(9, x, y, i);
        };
        core::SharedFilm film(*scene, {4 * side, 4 * side, side});
        const std::atomic<bool> cancel{false};
        for (std::size_t i = 0; i < 16; ++i) film.render(*scene, {film.grid().tile(i), 0, kPilot}, cancel);
        return core::adaptiveShares(film);
    };
    const auto before = sharesWith(-1);
    double means[2] = {0.0, 0.0};
    for (int tile = 0; tile < 16; ++tile) {
        EXPECT_GE(before[static_cast<std::size_t>(tile)], 0.25);
        EXPECT_LE(before[static_cast<std::size_t>(tile)], 8.0);
        means[(tile % 4 + tile / 4) % 2] += before[static_cast<std::size_t>(tile)] / 8.0;
    }
    EXPECT_NEAR(means[0], 1.0, 1.0e-9);
    EXPECT_NEAR(means[1], 1.0, 1.0e-9);
    for (int changed = 0; changed < 16; ++changed) {
        const auto after = sharesWith(changed);
        bool othersChanged = false;
        for (int tile = 0; tile < 16; ++tile) {
            const auto i = static_cast<std::size_t>(tile);
            if ((tile % 4 + tile / 4) % 2 == (changed % 4 + changed / 4) % 2) {
                EXPECT_EQ(after[i], before[i]) << tile << " of the colour of " << changed;
            } else {
                othersChanged = othersChanged || after[i] != before[i];
            }
        }
        EXPECT_TRUE(othersChanged) << changed;
    }
}

/// Most pixels of the left half have met none of its bright samples when the pilot is over.
TEST(Adaptive, SharesFollowTheDeviationWhereBrightSamplesAreRare) {
    SampledScene scene;
    scene.pixelsWide = 64;
    scene.pixelsHigh = 64;
    scene.value = [](int x, int y, std::uint32_t i) {
        const double u = uniform(21, x, y, i);
        return x < 32 ? (u < 1.0 / 64.0 ? 64.0 : 0.0) : (u < 0.2 ? 5.0 : 0.0);
    };
    core::SharedFilm film(scene, {64, 64, core::kAdaptiveTile});
    const std::atomic<bool> cancel{false};
    for (std::size_t i = 0; i < film.grid().count(); ++i) film.render(scene, {film.grid().tile(i), 0, kPilot}, cancel);
    const auto shares = core::adaptiveShares(film);
    double sums[2] = {0.0, 0.0};
    for (std::size_t i = 0; i < shares.size(); ++i) sums[film.grid().tile(i).x0 < 32] += shares[i];
    // Both means are 1, the variances 63 and 4. Pilots that met fewer bright samples than there are, and the tiles along the
    // edge, take some of it; deviations relative to each pixel's own mean alone would leave 1.5.
    EXPECT_GT(sums[1] / sums[0], 2.8);
    EXPECT_LT(sums[1] / sums[0], std::sqrt(63.0 / 4.0));
}

TEST(Adaptive, AtEqualSamplesTheErrorIsLowerWhereNoiseIsUneven) {
    double squares[2] = {0.0, 0.0};
    for (std::uint32_t seed = 1; seed <= 10; ++seed) {
        for (const bool adaptive : {false, true}) {
            const auto scene = unevenScene(seed);
            nemra_raw_t* raw = rendered(scene, 96, adaptive);
            ASSERT_NE(raw, nullptr);
            EXPECT_NEAR(nemraRawSPP(raw), 96.0, adaptive ? 0.5 : 0.0);
            eachPixel(*scene, [&](int x, int y) {
                const double truth = x < 16 ? 1.0 : 0.96875 + 1023.0 / 32768.0;
                squares[adaptive] += std::pow(valueAt(raw, x, y) / truth - 1.0, 2);
            });
            nemraRawRelease(&raw);
        }
    }
    // The noisy quarter gets 32 + 3.25 * 64 samples in place of 96, less along its edge.
    EXPECT_LT(std::sqrt(squares[1] / squares[0]), 0.7);
    EXPECT_GT(std::sqrt(squares[1] / squares[0]), std::sqrt(96.0 / 240.0) - 0.02);
}

TEST(Adaptive, AnyNumberOfThreadsGivesTheSameBits) {
    const auto scene = unevenScene(5);
    nemra_raw_t* const one = rendered(scene, 70, true, 1);
    nemra_raw_t* const three = rendered(scene, 70, true, 3);
    ASSERT_TRUE(one && three);
    double least = 1.0e9, most = 0.0;
    eachPixel(*scene, [&](int x, int y) {
        for (const char* const channel : {"E", "variance", "spp"})
            ASSERT_EQ(valueAt(one, x, y, channel), valueAt(three, x, y, channel));
        least = std::min(least, valueAt(one, x, y, "spp"));
        most = std::max(most, valueAt(one, x, y, "spp"));
    });
    EXPECT_GE(least, kPilot + 0.25 * (70 - kPilot) - 0.5);
    EXPECT_LE(most, kPilot + 8.0 * (70 - kPilot) + 0.5);
    EXPECT_GT(most, 2.0 * least);
    nemra_raw_t* const pilot = rendered(scene, 20, true);
    EXPECT_EQ(nemraRawSPP(pilot), 20.0) << "fewer than the pilot's are even";
}

}  // namespace
}  // namespace nemra::test
