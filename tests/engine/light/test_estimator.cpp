// How samples are drawn and summed: the same bits whatever the order, the right mean and the right spread.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <random>

#include "engine/core/film/cut_out.h"
#include "engine/core/result/svraw.h"
#include "engine/node/read_scene.h"
#include "tests/engine/light/render_scene.h"

namespace nemra::lighttest {
namespace {

node::Scene cornell(int size) {
    node::registerClasses();
    node::Scene scene;
    EXPECT_TRUE(node::readSceneFile(std::string(NEMRA_SOURCE_DIR) + "/sarvo/examples/cornellbox.svxml", scene));
    for (auto& node : scene.nodes) {
        if (node->family() != "setup") continue;
        const auto instrument = node->mutableChild("instrument");
        std::string why;
        EXPECT_TRUE(instrument->set("width", integer(size), why) && instrument->set("height", integer(size), why)) << why;
    }
    return scene;
}

void expectSameBits(const core::Film& a, const core::Film& b) {
    EXPECT_EQ(a.high, b.high);
    EXPECT_EQ(a.low, b.low);
    EXPECT_EQ(a.samples, b.samples);
    EXPECT_EQ(a.squares, b.squares);
    EXPECT_EQ(a.depth, b.depth);
    EXPECT_EQ(a.depthSamples, b.depthSamples);
}

TEST(Determinism, ThreadsAndTilesLeaveTheBits) {
    const auto scene = prepare(cornell(40));
    const Rendered reference = render(*scene, 24);
    EXPECT_EQ(reference.samples, 40U * 40U * 24U);
    EXPECT_EQ(reference.wrong, 0U);
    expectSameBits(*reference.film, *render(*scene, 24, 2, 7).film);
    expectSameBits(*reference.film, *render(*scene, 24, 5, 16).film);
    core::PrepareOptions embree;
    embree.flatLimit = 0;
    const auto packets = prepare(cornell(40), embree);
    expectSameBits(*render(*packets, 24, 1, 40).film, *render(*packets, 24, 5, 9).film);
}

using RawHandle = std::shared_ptr<core::Raw>;

RawHandle renderRaw(const core::PreparedScene& scene, std::uint32_t first, std::uint32_t end) {
    Rendered part = render(scene, end - first, 2, 8, first);
    return std::make_shared<core::Raw>(std::move(part.film), scene, core::RenderCounts{1.0, part.samples, part.wrong});
}

RawHandle throughFile(const core::Raw& raw) {
    const Buffer file = core::writeSvraw(raw);
    return core::readSvraw({file.data(), file.size()}, "part.svraw");
}

/// All channels and meta channels as a reader gets them, with the film's own sums.
void expectSameResult(const core::Raw& a, const core::Raw& b, const char* sensor, std::size_t parts) {
    SCOPED_TRACE(testing::Message() << sensor << " in " << parts << " parts");
    expectSameBits(*a.film(), *b.film());
    EXPECT_EQ(a.view()->values, b.view()->values);
    for (int meta = 0; meta < core::kMetaChannelCount; ++meta) {
        const auto index = static_cast<std::size_t>(meta);
        EXPECT_EQ(a.view()->meta[index], b.view()->meta[index]) << core::kMetaChannelNames[index];
    }
    EXPECT_EQ(a.counts().samples, b.counts().samples);
}

/// Disjoint ranges of samples, rendered anywhere and added in any order and grouping, before or after they were in a file, are
/// what one render would have computed.
TEST(Determinism, RangesMergeExactly) {
    const std::vector<std::vector<std::uint32_t>> cuts{{0, 23, 60}, {0, 1, 40, 60}, {0, 3, 5, 12, 29, 30, 53, 60}};
    for (const char* sensor : {"ciexyz", "energy", "spectralbox", "custom"}) {
        node::Scene cornellBox = cornell(20);
        for (auto& node : cornellBox.nodes) {
            const bool isCustom = std::string_view(sensor) == "custom";
            if (node->family() == "setup") {
                with(node->mutableChild("instrument"), "sensor", isCustom ? twoResponses() : make("sensor", sensor));
            }
        }
        const auto scene = prepare(cornellBox);
        const RawHandle whole = renderRaw(*scene, 0, 60);
        whole->generateSnr();
        EXPECT_GT(whole->view()->meta[int(core::MetaChannel::variance)][210], 0.0);
        EXPECT_GT(whole->view()->meta[int(core::MetaChannel::depth)][210], 0.0);
        std::mt19937 random(5);
        for (const auto& cut : cuts) {
            std::vector<RawHandle> parts;
            for (std::size_t i = 0; i + 1 < cut.size(); ++i) parts.push_back(renderRaw(*scene, cut[i], cut[i + 1]));
            for (int turn = 0; turn < 6; ++turn) {
                const bool stored = turn % 2 == 1;
                std::vector<RawHandle> left;
                for (const RawHandle& part : parts)
                    left.push_back(stored ? throughFile(*part) : std::make_shared<core::Raw>(*part));
                while (left.size() > 1) {  // any two that are left, which gives all orders and groupings
                    std::shuffle(left.begin(), left.end(), random);
                    const RawHandle last = left.back();
                    left.pop_back();
                    ASSERT_TRUE(left.back()->add(stored ? *throughFile(*last) : *last));
                }
                left.front()->generateSnr();
                expectSameResult(*whole, *left.front(), sensor, parts.size());
            }
        }
    }
}

/// Squares of numbers from starlight to the sun, and far beyond what a scene holds.
TEST(Estimator, SquaresSumUpTheSameInAnyOrder) {
    std::mt19937 random(11);
    for (const double decades : {0.0, 3.0, 12.0, 36.0}) {
        std::uniform_real_distribution<double> exponent(-decades, decades);
        std::vector<double> squares(500);
        for (double& square : squares) {
            const auto number = static_cast<float>(std::pow(10.0, exponent(random)) * 1.234567);
            square = static_cast<double>(number) * static_cast<double>(number);
        }
        squares[7] = squares[100] = 0.0;
        std::optional<core::SquareSum> first;
        for (int turn = 0; turn < 50; ++turn) {
            std::shuffle(squares.begin(), squares.end(), random);
            std::vector<core::SquareSum> groups(static_cast<std::size_t>(1 + turn % 9));
            for (std::size_t i = 0; i < squares.size(); ++i)
                add(groups[i * groups.size() / squares.size()], core::squareSum(squares[i]));
            core::SquareSum sum;
            for (const core::SquareSum& group : groups) add(sum, group);
            if (!first) first = sum;
            EXPECT_EQ(sum, *first) << decades;
        }
        const long double exact = std::accumulate(squares.begin(), squares.end(), 0.0L);
        const double largest = *std::max_element(squares.begin(), squares.end());
        EXPECT_NEAR(total(*first), static_cast<double>(exact), 500 * std::ldexp(largest, -32)) << decades;
    }
    EXPECT_EQ(total(core::SquareSum{}), 0.0);
    EXPECT_EQ(total(core::squareSum(0.0)), 0.0);
    EXPECT_EQ(total(core::squareSum(std::ldexp(3.0, -250))), std::ldexp(3.0, -250));
}

/// A part of the image rendered on its own is that part of the whole.
TEST(Determinism, CutOutsAddUpToTheWhole) {
    const auto scene = prepare(cornell(24));
    const Rendered whole = render(*scene, 20);
    const auto sum = scene->makeFilm();
    const std::atomic<bool> cancel{false};
    for (const core::PreparedScene::Tile tile :
         {core::PreparedScene::Tile{9, 0, 24, 24}, {0, 0, 9, 7}, {0, 7, 1, 24}, {1, 7, 9, 24}}) {
        const auto part = scene->makeFilm(tile);
        EXPECT_EQ(part->samples.size(), static_cast<std::size_t>(tile.x1 - tile.x0) * (tile.y1 - tile.y0));
        scene->render(*part, {0, 0, 24, 24}, 0, 20, cancel);  // cut to what the film has
        core::addCutOut(*sum, *part);
    }
    expectSameBits(*whole.film, *sum);
}

TEST(Determinism, EveryKernelComputesTheSameBits) {
    std::vector<core::RenderBatch> kernels{core::kernelBaseline()};
    if (core::hasWide()) kernels.push_back(core::kernelWide());
    if (core::hasWidest()) kernels.push_back(core::kernelWidest());
    std::unique_ptr<core::Film> reference;
    for (const core::RenderBatch kernel : kernels) {
        core::PrepareOptions options;
        options.kernel = kernel;
        Rendered result = render(*prepare(cornell(24), options), 32);
        if (reference) expectSameBits(*reference, *result.film);
        reference = std::move(result.film);
    }
}

/// The two ways of tracing see the same scene: pixel by pixel nearly all paths take the same course.
TEST(Determinism, PlanesAndEmbreeAgree) {
    core::PrepareOptions embree;
    embree.flatLimit = 0;
    const Rendered a = render(*prepare(cornell(32)), 64, 2);
    const Rendered b = render(*prepare(cornell(32), embree), 64, 2);
    double difference = 0.0, level = 0.0;
    for (std::size_t i = 0; i < a.film->high.size(); ++i) {
        difference += std::abs(a.film->high[i] + a.film->low[i] - b.film->high[i] - b.film->low[i]);
        level += a.film->high[i] + a.film->low[i];
    }
    EXPECT_LT(difference, 1.0e-3 * level);
}

TEST(Cancel, LeavesWholeSamples) {
    const auto scene = prepare(cornell(32));
    auto film = scene->makeFilm();
    const std::atomic<bool> cancelled{true};
    EXPECT_EQ(scene->render(*film, {0, 0, 32, 32}, 0, 100, cancelled).samples, 0U);
    std::atomic<bool> cancel{false};
    std::uint64_t samples = 0;
    std::thread worker([&] { samples = scene->render(*film, {0, 0, 32, 32}, 0, 4000, cancel).samples; });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    cancel = true;
    worker.join();
    std::uint64_t kept = 0;
    for (const std::uint32_t n : film->samples) kept += n;
    EXPECT_EQ(kept, samples);
    EXPECT_LT(samples, 32U * 32U * 4000U);
}

SceneMaker checker(int seed) {
    SceneMaker made;  // half of the view shines with 1, cut askew
    made.add(polygon({{-2, -5, 1}, {5, -5, 1}, {5, 5, 1}, {2, 5, 1}}),
             material(make("bsdf", "black"), emitter(uniform(1.0 / 470.0), {{"side", text("both")}})));
    with(made.setup, "instrument", camera({0, 0, 0}, {0, 0, 1}, 40.0, 1, 1, energySensor()));
    std::string why;
    made.setup->set("seed", integer(seed), why);
    return made;
}

/// Mean and spread of a pixel half of which shines, over a hundred seeds.
TEST(Estimator, VarianceIsTrueAndErrorFallsFastEnough) {
    double previous = 1.0;
    for (const std::uint32_t n : {64U, 1024U, 16384U}) {
        double sum = 0.0, squares = 0.0, reported = 0.0;
        for (int seed = 1; seed <= 100; ++seed) {
            SceneMaker made = checker(seed);
            const Estimate pixel = renderPixel(made.finish(), n);
            sum += pixel.mean;
            squares += (pixel.mean - 0.5) * (pixel.mean - 0.5);
            reported += pixel.error * pixel.error * n / 100.0;
        }
        const double rmse = std::sqrt(squares / 100.0);
        EXPECT_NEAR(sum / 100.0, 0.5, 4.5 * rmse / 10.0 + 1.0e-6);
        EXPECT_NEAR(reported, 0.25, 0.005);  // Bernoulli, per sample
        EXPECT_LT(rmse, 1.2 * 0.5 / std::sqrt(n));
        EXPECT_LT(rmse, previous / 4.0 * 1.3);  // slope -0.5 or steeper
        previous = rmse;
    }
}

/// Russian roulette, eight wavelengths instead of four, another sensor: the same mean.
TEST(Estimator, ChoicesOfMethodDoNotShiftTheMean) {
    const auto meanY = [](int wavelengths, int roulette, const char* sensor) {
        node::Scene scene = cornell(16);
        std::string why;
        for (auto& node : scene.nodes) {
            if (node->family() != "setup") continue;
            EXPECT_TRUE(node->set("wavelengths_per_path", integer(wavelengths), why)) << why;
            EXPECT_TRUE(node->set("roulette_depth", integer(roulette), why)) << why;
            with(node->mutableChild("instrument"), "sensor", make("sensor", sensor));
        }
        const auto prepared = prepare(scene);
        const Rendered result = render(*prepared, 1536, 2);
        double sum = 0.0, variance = 0.0;
        for (int x = 0; x < 16; ++x) {
            for (int y = 0; y < 16; ++y) {
                const Estimate pixel = estimate(*result.film, x, y, std::string(sensor) == "ciexyz" ? 1 : 0);
                sum += pixel.mean / 256.0;
                variance += pixel.error * pixel.error / 65536.0;
            }
        }
        return Estimate{sum, std::sqrt(variance)};
    };
    for (const char* sensor : {"ciexyz", "energy"}) {
        const Estimate reference = meanY(4, 5, sensor);
        EXPECT_LT(reference.error, 0.01 * reference.mean);
        for (const auto& [wavelengths, roulette] : {std::pair{8, 5}, {4, 1}, {4, 50}}) {
            const Estimate other = meanY(wavelengths, roulette, sensor);
            EXPECT_NEAR(other.mean, reference.mean, 4.5 * std::hypot(other.error, reference.error))
                << sensor << wavelengths << roulette;
        }
    }
}

/// Boxes summed up are the energy; boxes weighed with the observer are the luminance.
TEST(Estimator, SensorsAgree) {
    const auto film = [](const NodeHandle& sensor, std::uint32_t count) {
        node::Scene scene = cornell(8);
        for (auto& node : scene.nodes) {
            if (node->family() == "setup") with(node->mutableChild("instrument"), "sensor", sensor);
        }
        return render(*prepare(scene), count, 2).film;
    };
    const auto boxes =
        film(make("sensor", "spectralbox", {{"first", number(365)}, {"last", number(825)}, {"count", integer(47)}}), 8192);
    const auto energy = film(make("sensor", "energy"), 4096);
    double fromBoxes = 0.0, whole = 0.0;
    for (int x = 0; x < 8; ++x) {
        for (int y = 0; y < 8; ++y) {
            for (int c = 0; c < 47; ++c) fromBoxes += 10.0 * value(*boxes, x, y, c);
            whole += value(*energy, x, y, 0);
        }
    }
    EXPECT_NEAR(fromBoxes / whole, 1.0, 0.01);
    EXPECT_EQ(boxes->channels[0].name, "365 nm");
    EXPECT_DOUBLE_EQ(boxes->channels[46].wavelength, 825e-9);
}

}  // namespace
}  // namespace nemra::lighttest
