#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include "engine/common/host_call.h"

namespace nemra {
namespace {

using namespace std::chrono_literals;

struct ThrownByHost {
    static inline std::atomic<int> destroyed{0};
    ThrownByHost() = default;
    ThrownByHost(const ThrownByHost&) = default;
    ~ThrownByHost() { ++destroyed; }
};

// The destructor of what a host throws may need the host's lock, which the engine's thread doesn't have.
TEST(HostCall, NeverDestroysWhatTheHostThrew) {
    std::string what;
    EXPECT_EQ(callHost([] {}, what), HostCall::done);
    for (int i = 0; i < 5000; ++i) ASSERT_EQ(callHost([] { throw ThrownByHost(); }, what), HostCall::threw);
    EXPECT_EQ(ThrownByHost::destroyed, 0);
    EXPECT_EQ(what, "an unknown fault");
}

TEST(HostCall, TellsFaultsFromFunctionsThatTheHostTookAway) {
    std::string what;
    EXPECT_EQ(callHost([] { std::function<void()>()(); }, what), HostCall::empty);
    EXPECT_EQ(what, "");
    EXPECT_EQ(callHost([] { throw std::runtime_error("out of paper"); }, what), HostCall::threw);
    EXPECT_EQ(what, "out of paper");
}

/// Runs in a process of its own, since a closed gate stays closed.
int closeWhileACallbackRuns() {
    std::atomic<int> phase{0};
    std::thread caller([&] {
        std::string what;
        const auto wait = [&] {
            phase = 1;
            while (phase < 2) std::this_thread::sleep_for(1ms);
        };
        callHost(wait, what);
    });
    while (phase < 1) std::this_thread::sleep_for(1ms);
    const auto start = std::chrono::steady_clock::now();
    if (closeCallbackGate(50)) return 1;  // one is in flight, and the wait is bounded
    if (std::chrono::steady_clock::now() - start > 2s) return 2;
    std::string what;
    if (callHost([] {}, what) != HostCall::closed) return 3;
    phase = 2;
    if (!closeCallbackGate(2000)) return 4;
    caller.join();
    return 0;
}

int closeFromInsideACallback() {
    bool closed = false;
    // A callback entered the gate before it closed, so it may close it itself without waiting for its own end.
    std::string what;
    callHost([&] { closed = closeCallbackGate(1000); }, what);
    return closed ? 0 : 1;
}

TEST(HostCallDeathTest, ClosedGateLetsNothingNewIn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(_exit(closeWhileACallbackRuns()), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(_exit(closeFromInsideACallback()), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace nemra
