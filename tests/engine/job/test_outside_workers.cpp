// Renders that others than our own threads take part in: what they deliver, lose and give back.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <random>
#include <thread>

#include "tests/engine/job/recorder.h"

namespace nemra::test {
namespace {

using namespace std::chrono_literals;
using core::RenderJob;
using HandedOut = RenderJob::HandedOut;

constexpr int kIdle = NEMRA_RENDERER_IDLE;

/// A job without a renderer around it.
struct Hired {
    Recorder& recorder = makeRecorder();
    std::shared_ptr<core::Dispatcher> dispatcher = std::make_shared<core::Dispatcher>();
    std::atomic<int> wakes{0};
    std::shared_ptr<FakeScene> scene;
    std::shared_ptr<RenderJob> job;

    Hired(std::shared_ptr<FakeScene> toRender, int threads, const core::HaltCondition& halt) : scene(std::move(toRender)) {
        recorder.attach(*dispatcher);
        core::JobPlan plan;
        plan.scene = scene;
        plan.threads = threads;
        plan.hasOutsideWorkers = true;
        plan.halt = halt;
        job = std::make_shared<RenderJob>(std::move(plan), dispatcher);
        job->addWake([this] { ++wakes; });
        job->begin();
    }
    ~Hired() {
        dispatcher->close();
        job->cancel();
        while (job->state() != kIdle || job->scene()) std::this_thread::sleep_for(1ms);
        const int last = wakes;
        for (int quiet = 0; quiet < 20 && wakes == last; ++quiet) std::this_thread::sleep_for(1ms);  // the last wake of all
    }

    /// Some piece; the test fails if there is none to be had.
    HandedOut take() const {
        const auto pieces = job->takePieces({1});
        EXPECT_EQ(pieces.size(), 1U);
        return pieces.empty() ? HandedOut{0, {}} : pieces.front();
    }
    bool deliver(const HandedOut& handed) const {
        const std::atomic<bool> cancel{false};
        const core::Piece& piece = handed.piece;
        const auto film = scene->makeFilm(piece.tile);
        const auto done = scene->render(*film, piece.tile, piece.first, piece.count, cancel);
        return job->deliver(handed.id, *film, done);
    }
};

void expectSamples(nemra_raw_t* raw, const FakeScene& scene, std::uint32_t samples) {
    const int spp = nemraRawChannelIndex(raw, "spp");
    const int variance = nemraRawChannelIndex(raw, "variance");
    for (int x = 0; x < scene.pixelsWide; ++x) {
        for (int y = 0; y < scene.pixelsHigh; ++y) {
            ASSERT_EQ(nemraRawGetLightQuantity(raw, spp, x, y, 0), samples) << x << "," << y;
            double squares = 0.0;
            for (std::uint32_t i = 0; i < samples; ++i) squares += std::pow(FakeScene::sample(x, y, i, 1), 2);
            const double mean = FakeScene::mean(x, y, samples, 1);
            ASSERT_EQ(nemraRawGetLightQuantity(raw, variance, x, y, 0),
                      std::max(0.0, (squares - samples * mean * mean) / (samples - 1.0)));
            for (int c = 0; c < 3; ++c) ASSERT_EQ(nemraRawGetLightQuantity(raw, c, x, y, 0), FakeScene::mean(x, y, samples, c));
        }
    }
}

TEST(OutsideWorkers, WhateverTheyLoseAndInWhatOrderTheyDeliverTheResultIsThatOfOneThread) {
    for (const int threads : {0, 2}) {
        auto scene = std::make_shared<FakeScene>();
        scene->pixelsWide = 70;
        scene->pixelsHigh = 45;
        scene->perSample = 3us;  // so that our own threads leave the others something
        Hired run(scene, threads, {0.0, 45.0, NEMRA_HALT_STOPS});
        std::vector<std::thread> workers;
        std::atomic<int> delivered{0}, lost{0};
        for (unsigned seed = 1; seed <= 3; ++seed) {
            workers.emplace_back([&, seed] {
                std::mt19937 random(seed);
                std::vector<HandedOut> hand;
                while (run.job->state() == NEMRA_RENDERER_RUNNING) {
                    const auto more = run.job->takePieces({random() % 20000});
                    hand.insert(hand.end(), more.begin(), more.end());
                    std::shuffle(hand.begin(), hand.end(), random);
                    while (!hand.empty() && random() % 16 != 0) {
                        const HandedOut piece = hand.back();
                        hand.pop_back();
                        if (random() % 4 == 0) {
                            const std::uint64_t ids[] = {piece.id, piece.id, 1234567890123U};
                            run.job->giveBack(ids);
                            ++lost;
                            EXPECT_FALSE(run.deliver(piece)) << "it is somebody else's now";
                        } else {
                            EXPECT_TRUE(run.deliver(piece));
                            EXPECT_FALSE(run.deliver(piece)) << "delivered once already";
                            ++delivered;
                        }
                    }
                }
            });
        }
        const bool finished = run.recorder.waitFor([](const Recorder& r) { return !r.finished.empty(); }, 60000);
        run.job->stop();  // the workers must end in any case
        for (std::thread& worker : workers) worker.join();
        ASSERT_TRUE(finished);
        expectSamples(run.recorder.finished[0], *scene, 45);
        EXPECT_EQ(run.job->statistic(NEMRA_STAT_SAMPLES), 45.0 * 70 * 45);
        EXPECT_GT(delivered, 0);
        EXPECT_GT(lost, 0);
    }
}

TEST(OutsideWorkers, TowardsTheEndTheyGetLessAndTheLimitWaitsForThemAll) {
    auto scene = std::make_shared<FakeScene>();
    scene->pixelsWide = scene->pixelsHigh = 64;
    Hired run(scene, 0, {0.0, 20.0, NEMRA_HALT_STOPS});
    constexpr std::uint64_t all = 20U * 64U * 64U;
    std::deque<HandedOut> hand;
    std::uint64_t held = 0;
    for (std::uint64_t delivered = 0; delivered + held < all;) {
        for (const HandedOut& handed : run.job->takePieces({1U << 30, held})) {
            held += handed.piece.samples();
            hand.push_back(handed);
        }
        ASSERT_FALSE(hand.empty());
        EXPECT_LT(held, (all - delivered) / 2 + 64) << "somebody else could do the other half meanwhile";
        if (delivered + held == all) break;
        ASSERT_TRUE(run.deliver(hand.front()));
        delivered += hand.front().piece.samples();
        held -= hand.front().piece.samples();
        hand.pop_front();
    }
    ASSERT_EQ(hand.size(), 1U);
    const HandedOut last = hand.front();
    EXPECT_EQ(last.piece.samples(), 64U) << "one sample of each pixel of one tile of 8 x 8";
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(run.job->state(), NEMRA_RENDERER_RUNNING) << "one piece is missing";
    EXPECT_TRUE(run.deliver(last));
    ASSERT_TRUE(run.recorder.waitForFinish());
    expectSamples(run.recorder.finished[0], *scene, 20);
}

TEST(OutsideWorkers, PiecesGetAsDeepAsIsWorthTheirWayWhileThePictureStaysEven) {
    auto scene = std::make_shared<FakeScene>();
    scene->pixelsWide = scene->pixelsHigh = 64;
    Hired run(scene, 0, {});
    constexpr std::uint32_t worth = 100;  // samples of each of a tile's 64 pixels
    double spp = 0.0;
    for (std::uint32_t deepest = 0; spp < 300.0;) {
        const auto hand = run.job->takePieces({.hand = 1U << 15, .held = 0, .each = worth * 64, .workers = 1});
        ASSERT_FALSE(hand.empty());
        for (const HandedOut& handed : hand) {
            deepest = std::max(deepest, handed.piece.count);
            if (spp < 16.0) {
                EXPECT_LE(handed.piece.count, 16U);
            }
            if (spp > 2.0 * worth) {
                EXPECT_EQ(handed.piece.count, worth);
            }
            ASSERT_TRUE(run.deliver(handed));
        }
        EXPECT_LE(deepest, std::max(16.0, spp)) << "no pixel gets more at once than the others have";
        spp = run.job->statistic(NEMRA_STAT_SPP);
    }
    EXPECT_TRUE(run.job->takePieces({.hand = 1000, .held = 950}).empty()) << "too little is lacking for a message";
    EXPECT_FALSE(run.job->takePieces({.hand = 1000, .held = 800}).empty());
}

TEST(OutsideWorkers, ALimitThatComesDownOrGoesUpIsKept) {
    auto scene = std::make_shared<FakeScene>();
    Hired run(scene, 0, {0.0, 16.0, NEMRA_HALT_PAUSES});
    auto first = run.job->takePieces({1U << 30});
    ASSERT_FALSE(first.empty());
    std::vector<std::uint64_t> ids;
    for (const HandedOut& handed : first) ids.push_back(handed.id);
    run.job->giveBack(ids);  // pieces that reach beyond the limit that now comes
    run.job->setHalt({0.0, 3.0, NEMRA_HALT_PAUSES});
    const auto finishWith = [&] {
        for (auto hand = run.job->takePieces({1000}); !hand.empty(); hand = run.job->takePieces({1000})) {
            for (const HandedOut& handed : hand) ASSERT_TRUE(run.deliver(handed));
        }
    };
    finishWith();
    ASSERT_TRUE(run.recorder.waitForFinish());
    expectSamples(run.recorder.finished[0], *scene, 3);
    run.job->setHalt({0.0, 21.0, NEMRA_HALT_STOPS});
    EXPECT_TRUE(run.job->takePieces({1000}).empty()) << "paused still";
    ASSERT_TRUE(run.job->setPaused(false));
    finishWith();
    ASSERT_TRUE(run.recorder.waitForFinish(2));
    expectSamples(run.recorder.finished[1], *scene, 21);
}

TEST(OutsideWorkers, APauseTakesWhatIsDeliveredLateAndAnEndDoesNot) {
    auto scene = std::make_shared<FakeScene>();
    Hired run(scene, 0, {});
    const HandedOut early = run.take(), late = run.take(), never = run.take();
    EXPECT_TRUE(run.deliver(early));
    int wakes = run.wakes;
    ASSERT_TRUE(run.job->setPaused(true));
    EXPECT_GT(run.wakes, wakes);
    EXPECT_TRUE(run.job->takePieces({1000}).empty());
    EXPECT_TRUE(run.deliver(late));
    wakes = run.wakes;
    ASSERT_TRUE(run.job->setPaused(false));
    EXPECT_GT(run.wakes, wakes);
    run.job->stop();
    EXPECT_FALSE(run.deliver(never));
    EXPECT_TRUE(run.job->takePieces({1000}).empty());
    ASSERT_TRUE(run.recorder.waitForFinish());
    EXPECT_FALSE(run.deliver(never));
    const auto there = static_cast<double>(early.piece.samples() + late.piece.samples());
    EXPECT_EQ(nemraRawSPP(run.recorder.finished[0]), there / (20 * 12));
    run.job->endEarly("too late");
    EXPECT_TRUE(run.recorder.messages.empty());
}

TEST(OutsideWorkers, NeitherATimeHaltNorTheLastWorkersEndWaitsForThem) {
    auto scene = std::make_shared<FakeScene>();
    Hired timed(scene, 0, {0.05, 0.0, NEMRA_HALT_STOPS});
    const HandedOut kept = timed.take();
    ASSERT_TRUE(timed.recorder.waitForFinish());
    EXPECT_FALSE(timed.deliver(kept));

    Hired run(scene, 0, {0.0, 100.0, NEMRA_HALT_STOPS});
    ASSERT_TRUE(run.deliver(run.take()));
    run.take();
    EXPECT_EQ(run.job->scene(), scene);
    const int wakes = run.wakes;
    run.job->endEarly("no worker is left");
    EXPECT_GT(run.wakes, wakes);
    ASSERT_TRUE(run.recorder.waitForFinish());
    EXPECT_GT(nemraRawSPP(run.recorder.finished[0]), 0.0);
    EXPECT_EQ(run.recorder.messages, std::vector<std::string>{"renderer: no worker is left"});
    for (int wait = 0; run.job->scene() && wait < 5000; ++wait) std::this_thread::sleep_for(1ms);
    EXPECT_EQ(run.job->scene(), nullptr);
}

TEST(OutsideWorkers, AFilmThatDoesNotFitIsRefusedAndItsPieceGoesToAnother) {
    auto scene = std::make_shared<FakeScene>();
    Hired run(scene, 0, {0.0, 2.0, NEMRA_HALT_STOPS});
    const std::atomic<bool> cancel{false};
    int refused = 0;
    const auto refuse = [&](auto&& spoil) {
        const HandedOut handed = run.take();
        const core::Piece& piece = handed.piece;
        auto film = scene->makeFilm(piece.tile);
        auto done = scene->render(*film, piece.tile, piece.first, piece.count, cancel);
        spoil(*film, done);
        EXPECT_FALSE(run.job->deliver(handed.id, *film, done)) << refused;
        EXPECT_FALSE(run.deliver(handed)) << refused;
        ++refused;
    };
    refuse([](core::Film& film, auto&) { film.left += 1; });
    refuse([](core::Film& film, auto&) { film.high.pop_back(); });
    refuse([](core::Film& film, auto&) { film.depth.clear(); });
    refuse([](core::Film& film, auto&) { film.samples[0] -= 1; });
    refuse([](core::Film&, auto& done) { done.samples -= 1; });
    refuse([](core::Film&, auto& done) { done.wrong += 1; });
    for (auto hand = run.job->takePieces({1000}); !hand.empty(); hand = run.job->takePieces({1000})) {
        for (const HandedOut& handed : hand) ASSERT_TRUE(run.deliver(handed));
    }
    ASSERT_TRUE(run.recorder.waitForFinish());
    expectSamples(run.recorder.finished[0], *scene, 2);
}

}  // namespace
}  // namespace nemra::test
