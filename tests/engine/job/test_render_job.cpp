// A render as a script sees it: states, halts, pauses, results, with a scene whose every sample is known.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <thread>

#include "tests/engine/job/recorder.h"

namespace nemra::test {
namespace {

using namespace std::chrono_literals;
using core::HaltCondition;
using Clock = std::chrono::steady_clock;

constexpr int kIdle = NEMRA_RENDERER_IDLE;
constexpr int kRunning = NEMRA_RENDERER_RUNNING;
constexpr int kPaused = NEMRA_RENDERER_PAUSED;
constexpr int kStopping = NEMRA_RENDERER_STOPPING;

std::shared_ptr<FakeScene> slowScene() {
    auto scene = std::make_shared<FakeScene>();
    scene->perSample = 20us;
    return scene;
}

double seconds(Clock::duration span) { return std::chrono::duration<double>(span).count(); }

bool isArrow(int from, int to) {
    return (from == kIdle && to == kRunning) || (from == kRunning && (to == kPaused || to == kStopping)) ||
           (from == kPaused && (to == kRunning || to == kStopping)) || (from == kStopping && to == kIdle);
}

TEST(RenderJob, EachPixelGetsExactlyTheSamplesOfTheHaltForAnyNumberOfThreads) {
    for (const int threads : {1, 2, 5}) {
        for (const double spp : {1.0, 3.0, 24.5}) {
            auto scene = std::make_shared<FakeScene>();
            Recorder& recorder = makeRecorder();
            auto renderer = rendererWith(threads, {0.0, spp, NEMRA_HALT_STOPS});
            recorder.attach(*renderer);
            ASSERT_TRUE(renderer->start(loaderOf(scene)));
            ASSERT_TRUE(recorder.waitForFinish());
            nemra_raw_t* const raw = recorder.finished[0];
            const auto samples = static_cast<std::uint32_t>(std::ceil(spp));
            EXPECT_EQ(nemraRawSPP(raw), samples);
            for (int x = 0; x < scene->pixelsWide; ++x) {
                for (int y = 0; y < scene->pixelsHigh; ++y) {
                    for (int c = 0; c < 3; ++c) {
                        ASSERT_EQ(nemraRawGetLightQuantity(raw, c, x, y, NEMRA_QUANTITY_RAW), FakeScene::mean(x, y, samples, c))
                            << threads << " threads, " << x << "," << y << "," << c;
                    }
                }
            }
            renderer->release();
        }
    }
}

TEST(RenderJob, StatesGoByTheArrowsAndFinishComesLast) {
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(2, {0.0, 4.0, NEMRA_HALT_STOPS});
    recorder.attach(*renderer);
    ASSERT_TRUE(renderer->start(loaderOf(std::make_shared<FakeScene>())));
    ASSERT_TRUE(recorder.waitForFinish());
    EXPECT_EQ(recorder.states, (std::vector<int>{kRunning, kStopping, kIdle}));
    EXPECT_EQ(recorder.statesAtFinish[0], 3U);
    EXPECT_GE(recorder.statistics, 1);
}

TEST(RenderJob, TheCurrentRateIsNothingAtRest) {
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(1);
    recorder.attach(*renderer);
    ASSERT_TRUE(renderer->start(loaderOf(slowScene())));
    ASSERT_TRUE(recorder.waitFor([&](const Recorder& r) { return r.statistics > 0; }));
    EXPECT_GT(renderer->statistic(NEMRA_STAT_SPS_CURRENT), 0.0);
    renderer->setPaused(true);
    EXPECT_EQ(renderer->statistic(NEMRA_STAT_SPS_CURRENT), 0.0);
    renderer->setPaused(false);
    EXPECT_GT(renderer->statistic(NEMRA_STAT_SPS_CURRENT), 0.0);
    renderer->stop();
    ASSERT_TRUE(recorder.waitForFinish());
    EXPECT_EQ(renderer->statistic(NEMRA_STAT_SPS_CURRENT), 0.0);
    EXPECT_GT(renderer->statistic(NEMRA_STAT_SPS_AVERAGE), 0.0);
}

TEST(RenderJob, StartIsRefusedWhileRunningAndWorksAgainAfterwards) {
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(1);
    recorder.attach(*renderer);
    EXPECT_FALSE(renderer->start([](const core::Settings&, core::RenderPlaces) { return core::LoadedScene{}; }));
    ASSERT_TRUE(renderer->start(loaderOf(slowScene())));
    EXPECT_FALSE(renderer->start(loaderOf(slowScene())));
    renderer->stop();
    renderer->stop();
    ASSERT_TRUE(recorder.waitForFinish());
    EXPECT_TRUE(renderer->start(loaderOf(slowScene())));
    renderer->stop();
    ASSERT_TRUE(recorder.waitForFinish(2));
    EXPECT_TRUE(recorder.waitFor([](const Recorder& r) { return r.messages.size() == 1; }));
    EXPECT_NE(recorder.messages[0].find("under way"), std::string::npos);
}

TEST(RenderJob, WithoutANodeNothingStarts) {
    Recorder& recorder = makeRecorder();
    core::Renderer renderer;
    recorder.attach(renderer);
    EXPECT_FALSE(renderer.start(loaderOf(slowScene())));
    renderer.addRemoteNode();
    EXPECT_FALSE(renderer.start(loaderOf(slowScene())));
    EXPECT_TRUE(recorder.waitFor([](const Recorder& r) { return r.messages.size() == 3; }));
    renderer.addLocalNode();
    renderer.clearNodes();
    EXPECT_FALSE(renderer.start(loaderOf(slowScene())));
    EXPECT_FALSE(renderer.setPaused(true));
    EXPECT_FALSE(renderer.setPaused(false));
}

TEST(RenderJob, PauseStopAndTimeHaltDoNotWaitForTheTaskInHand) {
    Recorder& recorder = makeRecorder();
    auto scene = std::make_shared<FakeScene>();
    scene->pixelsWide = scene->pixelsHigh = 64;
    scene->perSample = 10ms;  // a tile of 256 pixels takes 2.5 s for one sample each, longer than any limit below
    auto renderer = rendererWith(2);
    recorder.attach(*renderer);
    ASSERT_TRUE(renderer->start(loaderOf(scene)));
    std::this_thread::sleep_for(150ms);
    ASSERT_TRUE(renderer->setPaused(true));
    std::this_thread::sleep_for(500ms);
    const double before = renderer->statistic(NEMRA_STAT_SAMPLES);
    const double time = renderer->statistic(NEMRA_STAT_TIME);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(renderer->statistic(NEMRA_STAT_SAMPLES), before);
    EXPECT_EQ(renderer->statistic(NEMRA_STAT_TIME), time) << "pauses don't count";
    ASSERT_TRUE(renderer->setPaused(false));
    for (int wait = 0; renderer->statistic(NEMRA_STAT_SAMPLES) == before && wait < 5000; ++wait) std::this_thread::sleep_for(1ms);
    EXPECT_GT(renderer->statistic(NEMRA_STAT_SAMPLES), before);
    auto asked = Clock::now();
    renderer->stop();
    ASSERT_TRUE(recorder.waitForFinish());
    EXPECT_LT(seconds(Clock::now() - asked), 1.5);

    renderer->setHalt({0.2, 0.0, NEMRA_HALT_STOPS});
    asked = Clock::now();
    ASSERT_TRUE(renderer->start(loaderOf(scene)));
    ASSERT_TRUE(recorder.waitForFinish(2));
    EXPECT_GE(seconds(Clock::now() - asked), 0.2);
    EXPECT_LT(seconds(Clock::now() - asked), 1.7);
    EXPECT_NEAR(nemraRawRenderTime(recorder.finished[1]), 0.2, 1.5);
}

TEST(RenderJob, AHaltThatPausesFinishesOnceAndCanBeResumed) {
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(2, {0.0, 3.0, NEMRA_HALT_PAUSES});
    recorder.attach(*renderer);
    ASSERT_TRUE(renderer->start(loaderOf(slowScene())));
    ASSERT_TRUE(recorder.waitForFinish());
    EXPECT_EQ(nemraRawSPP(recorder.finished[0]), 3.0);
    EXPECT_EQ(recorder.states.back(), kPaused);
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(recorder.finished.size(), 1U);

    EXPECT_TRUE(renderer->setPaused(false));
    EXPECT_TRUE(recorder.waitFor([](const Recorder& r) { return r.states.back() == kRunning; }));
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(recorder.finished.size(), 1U) << "a condition that has had its effect must not come again";
    const auto reached = static_cast<std::uint32_t>(renderer->statistic(NEMRA_STAT_SPP));
    EXPECT_GE(reached, 3U);
    renderer->setHalt({0.0, reached + 40.0, NEMRA_HALT_PAUSES});
    ASSERT_TRUE(recorder.waitForFinish(2));
    EXPECT_EQ(nemraRawSPP(recorder.finished[1]), reached + 40.0);
    EXPECT_EQ(nemraRawGetLightQuantity(recorder.finished[1], 1, 7, 5, 0), FakeScene::mean(7, 5, reached + 40, 1));

    renderer->stop();
    EXPECT_TRUE(recorder.waitFor([](const Recorder& r) { return r.states.back() == kIdle; }));
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(recorder.finished.size(), 2U) << "nothing new to show after the last finish";
    for (std::size_t i = 1; i < recorder.states.size(); ++i) EXPECT_TRUE(isArrow(recorder.states[i - 1], recorder.states[i]));
}

TEST(RenderJob, AHaltThatChangesNothingFinishesOnceWithItsSamplesAndGoesOn) {
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(2, {0.0, 5.0, NEMRA_HALT_NOCHANGE});
    recorder.attach(*renderer);
    ASSERT_TRUE(renderer->start(loaderOf(slowScene())));
    ASSERT_TRUE(recorder.waitForFinish());
    EXPECT_EQ(nemraRawSPP(recorder.finished[0]), 5.0);
    std::this_thread::sleep_for(60ms);
    EXPECT_EQ(recorder.finished.size(), 1U);
    EXPECT_EQ(recorder.states.back(), kRunning);
    EXPECT_GT(renderer->statistic(NEMRA_STAT_SPP), 5.0);
    renderer->setHalt({0.0, 1.0, NEMRA_HALT_STOPS});  // long since passed
    ASSERT_TRUE(recorder.waitForFinish(2));
    EXPECT_GT(nemraRawSPP(recorder.finished[1]), 5.0);
}

TEST(RenderJob, UpdatesAreConsistentWhileTheRenderGoesOn) {
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(2);
    recorder.attach(*renderer);
    ASSERT_TRUE(renderer->start(loaderOf(slowScene())));
    for (std::size_t i = 1; i <= 20; ++i) {
        renderer->updateRaw();
        ASSERT_TRUE(recorder.waitFor([&](const Recorder& r) { return r.updateSpp.size() >= i; }));
    }
    EXPECT_TRUE(std::is_sorted(recorder.updateSpp.begin(), recorder.updateSpp.end()));
    nemra_raw_t* const latest = recorder.handles.back();
    nemra_raw_t* kept = nemraRawCopy(latest);
    renderer->release();
    EXPECT_EQ(nemraRawWidth(latest), 0) << "the raw was the renderer's";
    EXPECT_EQ(nemraRawGetLightQuantity(latest, 0, 1, 1, 0), 0.0);
    ASSERT_EQ(nemraRawWidth(kept), 20);
    const int spp = nemraRawChannelIndex(kept, "spp");
    for (int x = 0; x < 20; ++x) {
        const auto samples = static_cast<std::uint32_t>(nemraRawGetLightQuantity(kept, spp, x, 3, 0));
        ASSERT_EQ(nemraRawGetLightQuantity(kept, 2, x, 3, 0), samples > 0 ? FakeScene::mean(x, 3, samples, 2) : 0.0);
    }
    nemraRawRelease(&kept);
}

TEST(RenderJob, AStormOfRequestsKeepsToTheArrows) {
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(3);
    recorder.attach(*renderer);
    std::uint32_t random = 12345;
    for (int i = 0; i < 400; ++i) {
        random = random * 1664525U + 1013904223U;
        switch (random >> 29) {
            case 0:
                renderer->start(loaderOf(slowScene()));
                break;
            case 1:
                renderer->stop();
                break;
            case 2:
                renderer->setHalt(
                    {0.0, static_cast<double>(random >> 8 & 15), static_cast<nemra_renderer_halt_cond_t>(random % 3)});
                break;
            case 3:
                renderer->updateRaw();
                break;
            default:
                renderer->setPaused(random >> 27 & 1);
                break;
        }
        if (i % 16 == 0) std::this_thread::sleep_for(1ms);
    }
    renderer->stop();
    ASSERT_TRUE(recorder.waitFor([](const Recorder& r) { return r.states.empty() || r.states.back() == kIdle; }));
    int state = kIdle;
    for (const int next : recorder.states) {
        EXPECT_TRUE(isArrow(state, next)) << state << " to " << next;
        state = next;
    }
}

/// A scene for which memory runs out when results are made.
class ScarceScene final : public FakeScene {
public:
    mutable std::atomic<int> films{1000};  ///< that can be made before there is no memory for more
    bool noResult = false;

    using PreparedScene::makeFilm;
    std::unique_ptr<core::Film> makeFilm(Tile tile) const override {
        if (films-- <= 0) throw std::bad_alloc();
        return FakeScene::makeFilm(tile);
    }
    double offAxis(int x, int y) const override {
        if (noResult) throw std::bad_alloc();
        return FakeScene::offAxis(x, y);
    }
};

TEST(RenderJob, WithoutMemoryForAResultWhoeverWaitsForTheFinishHearsIt) {
    for (const auto action :
         {NEMRA_HALT_PAUSES, NEMRA_HALT_NOCHANGE}) {  // no copy can be made: the render stops with what it has
        auto scene = std::make_shared<ScarceScene>();
        scene->films = 1;
        Recorder& recorder = makeRecorder();
        auto renderer = rendererWith(2, {0.0, 2.0, action});
        recorder.attach(*renderer);
        ASSERT_TRUE(renderer->start(loaderOf(scene)));
        ASSERT_TRUE(recorder.waitForFinish());
        EXPECT_GE(nemraRawSPP(recorder.finished[0]), 2.0);
        EXPECT_EQ(recorder.states.back(), kIdle);
        ASSERT_EQ(recorder.messages.size(), 1U);
        EXPECT_NE(recorder.messages[0].find("no memory for a copy"), std::string::npos);
    }
    auto scene = std::make_shared<ScarceScene>();  // not even the result itself
    scene->noResult = true;
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(2, {0.0, 2.0, NEMRA_HALT_STOPS});
    recorder.attach(*renderer);
    ASSERT_TRUE(renderer->start(loaderOf(scene)));
    ASSERT_TRUE(recorder.waitForFinish());
    EXPECT_EQ(recorder.handles[0], nullptr);
    EXPECT_EQ(recorder.states, (std::vector<int>{kRunning, kStopping, kIdle}));
    scene->noResult = false;
    ASSERT_TRUE(renderer->start(loaderOf(scene)));
    ASSERT_TRUE(recorder.waitForFinish(2));
    EXPECT_EQ(nemraRawSPP(recorder.finished[1]), 2.0);
}

TEST(RenderJob, SeveralNodesAddTheirThreadsAndRenderersDontDisturbEachOther) {
    std::vector<Recorder*> recorders;
    std::vector<std::shared_ptr<core::Renderer>> renderers;
    auto scene = std::make_shared<FakeScene>();
    for (int i = 0; i < 4; ++i) {
        recorders.push_back(&makeRecorder());
        renderers.push_back(rendererWith(1, {0.0, 9.0, NEMRA_HALT_STOPS}));
        renderers.back()->addLocalNode();
        recorders.back()->attach(*renderers.back());
        ASSERT_TRUE(renderers.back()->start(loaderOf(scene)));
    }
    for (Recorder* const recorder : recorders) {
        ASSERT_TRUE(recorder->waitForFinish());
        EXPECT_EQ(nemraRawGetLightQuantity(recorder->finished[0], 0, 19, 11, 0), FakeScene::mean(19, 11, 9, 0));
    }
}

}  // namespace
}  // namespace nemra::test
