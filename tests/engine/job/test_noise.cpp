// The noise of a picture, and renders that end by it.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/core/job/noise.h"
#include "tests/engine/job/recorder.h"

namespace nemra::test {
namespace {

using namespace std::chrono_literals;

/// By its definition, from the samples themselves.
double noiseOf(const FakeScene& scene, std::uint32_t samples) {
    const bool isXyz = scene.sensor == FakeScene::Sensor::xyz;
    const int pixels = scene.pixelsWide * scene.pixelsHigh;
    const auto value = [&](int x, int y, std::uint32_t i) { return FakeScene::sample(x, y, i, isXyz ? 1 : 0); };
    double level = 0.0;
    std::vector<double> means, errors;
    for (int x = 0; x < scene.pixelsWide; ++x) {
        for (int y = 0; y < scene.pixelsHigh; ++y) {
            double mean = 0.0, variance = 0.0;
            for (std::uint32_t i = 0; i < samples; ++i) mean += value(x, y, i) / samples;
            for (std::uint32_t i = 0; i < samples; ++i) variance += std::pow(value(x, y, i) - mean, 2) / (samples - 1);
            means.push_back(mean);
            errors.push_back(std::sqrt(variance / samples));
            level += mean / pixels;
        }
    }
    double sum = 0.0;
    for (std::size_t i = 0; i < means.size(); ++i) sum += std::pow(errors[i] / (means[i] + 0.01 * level), 2) / pixels;
    return std::sqrt(sum);
}

double measured(const FakeScene& scene, std::uint32_t samples) {
    const auto grid = core::TileGrid::fitting(scene.pixelsWide, scene.pixelsHigh, 1);
    core::SharedFilm film(scene, grid);
    const std::atomic<bool> cancel{false};
    for (std::size_t i = 0; i < grid.count(); ++i) film.render(scene, {grid.tile(i), 0, samples}, cancel);
    return core::relativeNoise(film);
}

TEST(Noise, IsTheRelativeStandardErrorOfThePixels) {
    for (const auto sensor : {FakeScene::Sensor::xyz, FakeScene::Sensor::energy}) {
        FakeScene scene;
        scene.sensor = sensor;
        for (const std::uint32_t samples : {16U, 40U, 200U}) {
            const double noise = measured(scene, samples);
            EXPECT_NEAR(noise, noiseOf(scene, samples), 1.0e-9 * noise);
            // The values are 1024 numbers from 0 on, 1/64 apart, all as likely: the standard deviation over the mean is
            // sqrt((n + 1) / (3 (n - 1))). Means of 16 of them scatter by a seventh, which adds three times its square.
            EXPECT_NEAR(noise * std::sqrt(samples), 1.0 / std::sqrt(3.0) / 1.01, samples == 16 ? 0.08 : 0.03);
        }
        EXPECT_TRUE(std::isinf(measured(scene, 15)));
    }
}

/// Bands: squares are those of their mean, whose samples aren't the fake scene's; so noise must only be finite and fall.
TEST(Noise, OfBandsUsesTheirMean) {
    class Bands final : public FakeScene {
        Counts render(core::Film& film, Tile tile, std::uint32_t first, std::uint32_t count,
                      const std::atomic<bool>&) const override {
            for (int x = tile.x0; x < tile.x1; ++x) {
                for (int y = tile.y0; y < tile.y1; ++y) {
                    const std::size_t pixel = film.pixel(x, y);
                    for (std::uint32_t i = first; i < first + count; ++i) {
                        const double value = i % 2 == 0 ? 1.0 : 3.0;
                        for (int c = 0; c < 4; ++c) film.high[film.cell(x, y, c)] += (c + 1) * value;
                        core::SquareSum squares = film.squares.at(pixel);
                        add(squares, core::squareSum(2.5 * value * 2.5 * value));
                        film.squares.put(pixel, squares);
                    }
                    film.samples[pixel] += count;
                }
            }
            return {240, 0};
        }
    } scene;
    scene.sensor = FakeScene::Sensor::spectral;
    // Mean 5, variance 2.5^2 * 64 / 63, so the standard error is 2.5 / sqrt(63) and the scale 5.05.
    EXPECT_NEAR(measured(scene, 64), 2.5 / std::sqrt(63.0) / 5.05, 1.0e-12);
}

TEST(Noise, ABlackPictureHasNone) {
    FakeScene scene;
    core::SharedFilm film(scene, core::TileGrid::fitting(20, 12, 1));
    EXPECT_TRUE(std::isinf(core::relativeNoise(film)));
    const auto& grid = film.grid();
    for (std::size_t i = 0; i < grid.count(); ++i) {
        const auto part = scene.makeFilm(grid.tile(i));
        part->samples.assign(part->samples.size(), 16);
        film.add({grid.tile(i), 0, 16}, *part);
    }
    EXPECT_EQ(core::relativeNoise(film), 0.0);
}

TEST(Noise, EndsARenderAsTheHaltConditionSays) {
    auto scene = std::make_shared<FakeScene>();
    scene->perSample = 50us;
    for (const auto& [wanted, action] : {std::pair{"0.05", NEMRA_HALT_STOPS}, std::pair{"10", NEMRA_HALT_PAUSES}}) {
        Recorder& recorder = makeRecorder();
        auto renderer = std::make_shared<core::Renderer>();
        recorder.attach(*renderer);
        renderer->setParameter("num_threads", "2");
        renderer->setParameter("halt_noise", wanted);
        renderer->addLocalNode();
        renderer->setHalt({0.0, 0.0, action});
        ASSERT_TRUE(renderer->start(loaderOf(scene)));
        ASSERT_TRUE(recorder.waitFor([](const Recorder& r) { return r.finished.size() == 1; }, 30000));
        const double spp = nemraRawSPP(recorder.finished[0]);
        EXPECT_GE(spp, 16.0);
        EXPECT_EQ(recorder.states.back(), action == NEMRA_HALT_STOPS ? NEMRA_RENDERER_IDLE : NEMRA_RENDERER_PAUSED);
        EXPECT_GT(spp, action == NEMRA_HALT_STOPS ? 110.0 : 0.0) << "1/3 / (1.01 * 0.05)^2 = 131";
        renderer->stop();
    }
}

TEST(Noise, TheParameterTakesNumbersOnly) {
    core::Settings settings;
    std::string why;
    for (const char* const wrong : {"", "low", "0.01x", "nan", "inf"})
        EXPECT_FALSE(settings.set("halt_noise", wrong, why)) << wrong;
    EXPECT_TRUE(settings.set("halt_noise", "2", why));
    EXPECT_EQ(settings.haltNoise, 2.0);
    EXPECT_TRUE(settings.set("save_interval", "0.5", why));
    EXPECT_EQ(settings.saveInterval, 0.5);
}

}  // namespace
}  // namespace nemra::test
