// What hosts do in callbacks, and to renderers while callbacks are under way.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "engine/common/host_call.h"
#include "engine/common/slot_table.h"
#include "module/flat/nemra_renderer.h"
#include "tests/engine/job/recorder.h"

namespace nemra::test {
namespace {

using namespace std::chrono_literals;

std::shared_ptr<FakeScene> slowScene() {
    auto scene = std::make_shared<FakeScene>();
    scene->perSample = 20us;
    return scene;
}

TEST(Callbacks, OneThatThrowsIsReportedAndTheOthersStillCome) {
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(1, {0.0, 2.0, NEMRA_HALT_STOPS});
    recorder.attach(*renderer);
    renderer->callbacks().setState(nullptr, [](void*, NemraRendererState_t) { throw std::runtime_error("boom"); });
    ASSERT_TRUE(renderer->start(loaderOf(std::make_shared<FakeScene>())));
    ASSERT_TRUE(recorder.waitForFinish());
    ASSERT_TRUE(recorder.waitFor([](const Recorder& r) { return r.messages.size() == 3; }));
    EXPECT_EQ(recorder.messages[0], "renderer: the state callback raised: boom");
}

TEST(Callbacks, OneThatAlwaysThrowsIsCalledNoMoreAfterAWhile) {
    static std::atomic<int> calls{0};
    calls = 0;
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(1);
    recorder.attach(*renderer);
    renderer->callbacks().setState(nullptr, [](void*, NemraRendererState_t) {
        ++calls;
        throw 7;  // no std::exception either
    });
    ASSERT_TRUE(renderer->start(loaderOf(slowScene())));
    for (int i = 0; i < 50; ++i) {
        renderer->setPaused(true);
        renderer->setPaused(false);
    }
    renderer->stop();
    ASSERT_TRUE(recorder.waitForFinish());
    EXPECT_EQ(calls, 64);
    EXPECT_NE(recorder.messages.back().find("called no more"), std::string::npos);
}

TEST(Callbacks, AHostThatHasNothingToCallAnyMoreIsAskedOnceAndAgainWhenItSetsOne) {
    static std::atomic<int> calls{0};
    calls = 0;
    const auto empty = [](void*, nemra_raw_t*) {
        ++calls;
        throw std::bad_function_call();
    };
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(1);
    recorder.attach(*renderer);
    renderer->callbacks().setUpdate(nullptr, empty);
    ASSERT_TRUE(renderer->start(loaderOf(slowScene())));
    const auto ask = [&] {
        for (int i = 0; i < 20; ++i) {
            renderer->updateRaw();
            std::this_thread::sleep_for(5ms);
        }
    };
    ask();
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(renderer->callbacks().wants(core::Dispatcher::Slot::update)) << "or results are copied for nobody";
    renderer->callbacks().setUpdate(nullptr, empty);
    ask();
    EXPECT_EQ(calls, 2);
    recorder.attach(*renderer);
    ask();
    EXPECT_TRUE(recorder.waitFor([](const Recorder& r) { return r.updateSpp.size() > 3; }));
    const std::lock_guard lock(recorder.mutex);
    EXPECT_TRUE(recorder.messages.empty());
    renderer->release();
}

TEST(Callbacks, AMessageCallbackThatThrowsDoesNotHearOfItself) {
    static std::atomic<int> calls{0};
    calls = 0;
    Recorder& recorder = makeRecorder();
    core::Renderer renderer;
    recorder.attach(renderer);
    renderer.callbacks().setMessage(nullptr, [](void*, const char*, const char*, LogLevel_t) {
        ++calls;
        throw std::runtime_error("boom");
    });
    renderer.start(loaderOf(slowScene()));  // refused with a message: there is no node
    std::this_thread::sleep_for(60ms);
    EXPECT_EQ(calls, 1);
}

TEST(Callbacks, AllOfARendererCanBeUsedFromInsideOne) {
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(2, {0.0, 2.0, NEMRA_HALT_STOPS});
    recorder.attach(*renderer);
    std::atomic<int> restarts{0};
    recorder.onFinish = [&](nemra_raw_t*) {
        renderer->stop();
        renderer->setParameter("num_threads", "1");
        renderer->updateRaw();
        if (restarts < 3 && renderer->start(loaderOf(std::make_shared<FakeScene>()))) ++restarts;
    };
    ASSERT_TRUE(renderer->start(loaderOf(std::make_shared<FakeScene>())));
    ASSERT_TRUE(recorder.waitForFinish(4));
    EXPECT_EQ(restarts, 3) << "a renderer whose finish is told can start again";
    renderer->release();
    std::this_thread::sleep_for(20ms);
}

TEST(Callbacks, AfterReleaseNoneStartsAndReleaseDoesNotWait) {
    struct Host {
        std::atomic<bool> released{false};
        std::atomic<int> late{0};
        std::atomic<int> inside{0};
    };
    // The hosts outlive the test, as the memory of a host that is being destroyed does for a callback under way.
    static auto& hosts = *new std::deque<Host>;
    for (int repeat = 0; repeat < 30; ++repeat) {
        Host* const host = &hosts.emplace_back();
        nemra_renderer_t* handle = nemraRendererCreate();
        auto renderer = nemra::find<core::Renderer>(handle);
        renderer->addLocalNode();
        renderer->callbacks().setState(host, [](void* user, NemraRendererState_t) {
            auto& h = *static_cast<Host*>(user);
            if (h.released) ++h.late;
            ++h.inside;
            std::this_thread::sleep_for(30ms);
        });
        renderer->callbacks().setStatistics(host, [](void* user) {
            if (static_cast<Host*>(user)->released) ++static_cast<Host*>(user)->late;
        });
        ASSERT_TRUE(renderer->start(loaderOf(slowScene())));
        if (repeat % 3 != 0) std::this_thread::sleep_for(std::chrono::milliseconds(repeat));
        renderer.reset();
        const auto before = std::chrono::steady_clock::now();
        nemraRendererRelease(&handle);
        const auto took = std::chrono::steady_clock::now() - before;
        host->released = true;
        EXPECT_EQ(handle, nullptr);
        EXPECT_LT(took, 20ms) << "a release must not wait for a callback";
        std::this_thread::sleep_for(40ms);
        EXPECT_EQ(host->late, 0);
        if (repeat == 0) {
            EXPECT_EQ(host->inside, 0) << "a callback must not begin while the host has just started the render";
        }
    }
}

TEST(Callbacks, ReleaseFromInsideACallback) {
    static nemra_renderer_t* handle;
    static std::atomic<int> calls;  // counted after the release, so that whoever sees a call sees the handle that it left
    for (int repeat = 0; repeat < 10; ++repeat) {
        calls = 0;
        handle = nemraRendererCreate();
        auto renderer = nemra::find<core::Renderer>(handle);
        renderer->addLocalNode();
        nemraRendererSetStateChangedCallback(handle, nullptr, [](void*, NemraRendererState_t) {
            nemraRendererRelease(&handle);
            ++calls;
        });
        ASSERT_TRUE(renderer->start(loaderOf(slowScene())));
        renderer.reset();
        for (int wait = 0; calls == 0 && wait < 5000; ++wait) std::this_thread::sleep_for(1ms);
        std::this_thread::sleep_for(30ms);  // time for a second call, which must not come
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(handle, nullptr);
    }
}

TEST(Callbacks, ABlockedHostLosesNoStateAndHoldsUpNoRender) {
    Recorder& recorder = makeRecorder();
    auto renderer = rendererWith(1, {0.0, 3.0, NEMRA_HALT_STOPS});
    recorder.attach(*renderer);
    {
        const std::lock_guard hostIsBusy(recorder.mutex);
        ASSERT_TRUE(renderer->start(loaderOf(std::make_shared<FakeScene>())));
        std::this_thread::sleep_for(100ms);
        EXPECT_EQ(renderer->statistic(NEMRA_STAT_SPP), 3.0) << "rendering goes on while the host has no time";
        EXPECT_TRUE(recorder.states.empty());
    }
    ASSERT_TRUE(recorder.waitForFinish());
    EXPECT_EQ(recorder.states, (std::vector<int>{NEMRA_RENDERER_RUNNING, NEMRA_RENDERER_STOPPING, NEMRA_RENDERER_IDLE}));
}

/// Renderers dropped under the host's lock at any moment, also when a callback waits for just that lock. In a process of its own,
/// since a lock stays. Gives the number of callbacks that came to a host object which was gone.
int dropUnderTheHostsLock() {
    static std::recursive_mutex mutex;
    static std::atomic<int> faults{0};
    setHostLock({[] {
                     mutex.lock();
                     return 7;
                 },
                 [](int token) {
                     if (token != 7) ++faults;
                     mutex.unlock();
                 }});
    struct Host {
        bool alive = true;  // under the lock
        static void visit(void* user) {
            const std::lock_guard lock(mutex);
            if (!static_cast<Host*>(user)->alive) ++faults;
        }
    };
    static auto& hosts = *new std::deque<Host>;
    for (int i = 0; i < 200; ++i) {
        std::unique_lock lock(mutex);
        Host& host = hosts.emplace_back();
        nemra_renderer_t* renderer = nemraRendererCreate();
        nemraRendererAddLocalNode(renderer);
        nemraRendererSetStateChangedCallback(renderer, &host, [](void* user, NemraRendererState_t) { Host::visit(user); });
        nemraRendererSetFinishedCallback(renderer, &host, [](void* user, nemra_raw_t*) { Host::visit(user); });
        nemraRendererSetMessageCallback(renderer, &host,
                                        [](void* user, const char*, const char*, LogLevel_t) { Host::visit(user); });
        nemraRendererSetHaltCondition(renderer, 0.0, 1.0 + i % 3, NEMRA_HALT_STOPS);
        nemra::find<core::Renderer>(renderer)->start(loaderOf(std::make_shared<FakeScene>()));
        nemraRendererSetParameter(renderer, "no such parameter", "");
        const auto hold = std::chrono::microseconds(50 * (i % 20));
        if (i % 2 == 0) lock.unlock();
        std::this_thread::sleep_for(hold);
        if (i % 2 == 0) lock.lock();
        host.alive = false;
        nemraRendererRelease(&renderer);
    }
    std::this_thread::sleep_for(50ms);
    return faults;
}

TEST(CallbacksDeathTest, NoneComesToARendererThatWasDroppedUnderTheHostsLock) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(_exit(dropUnderTheHostsLock()), testing::ExitedWithCode(0), "");
}

TEST(Callbacks, StaleAndForeignHandlesAreAnswered) {
    nemra_renderer_t* renderer = nemraRendererCreate();
    nemra_renderer_t* const stale = renderer;
    nemraRendererRelease(&renderer);
    nemraRendererRelease(&renderer);
    nemraRendererRelease(nullptr);
    for (nemra_renderer_t* const handle :
         {static_cast<nemra_renderer_t*>(nullptr), stale, reinterpret_cast<nemra_renderer_t*>(12345)}) {
        EXPECT_FALSE(nemraRendererStart(handle, "nowhere.svxml"));
        EXPECT_FALSE(nemraRendererStartData(handle, "x", 1));
        EXPECT_FALSE(nemraRendererTogglePause(handle, true));
        EXPECT_EQ(nemraRendererGetStatistic(handle, NEMRA_STAT_SPP), 0.0);
        nemraRendererStop(handle);
        nemraRendererUpdateRaw(handle);
        nemraRendererSetParameter(handle, nullptr, nullptr);
        nemraRendererSetHaltCondition(handle, 1, 1, NEMRA_HALT_STOPS);
    }
}

}  // namespace
}  // namespace nemra::test
