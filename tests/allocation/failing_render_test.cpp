// Memory that runs out at any point of a render, in the script's thread that starts it or in any thread while it runs: an answer
// that says so or a render that ends, and a next render that is right. Under AddressSanitizer also: nothing is left behind.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "module/flat/nemra_node.h"
#include "module/flat/nemra_raw.h"
#include "module/flat/nemra_renderer.h"
#include "tests/allocation/failing_memory.h"

namespace nemra::test {
namespace {

constexpr std::string_view kScene = R"(<scene>
    <node family="material" type="generic" name="white">
        <child slot="bsdf" type="lambertian"/>
    </node>
    <node family="setup" type="default" name="main">
        <child slot="environment" type="uniform"/>
        <child slot="instrument" type="stdcam">
            <parameter name="position" value="0 0 -3"/>
            <parameter name="width" value="24"/>
            <parameter name="height" value="16"/>
            <item type="rgbimage" name="picture"/>
        </child>
    </node>
    <mesh name="square" material="white">
        <vertices>-1 -1 0 1 -1 0 1 1 0 -1 1 0</vertices>
        <triangles>0 1 2 0 2 3</triangles>
    </mesh>
    <sphere name="ball" radius="0.4" material="white"/>
    <instance geometry="square"/>
    <instance geometry="ball"><transform>1 0 0 0.2 0 2 0 0 0 0 1 0 0 0 0 1</transform></instance>
</scene>
)";

using namespace std::chrono_literals;

/// A renderer and what it tells. Its callbacks ask for no memory.
class Host {
public:
    Host() : renderer_(nemraRendererCreate()) {
        nemraRendererSetParameterInt(renderer_, "num_threads", 2);
        nemraRendererAddLocalNode(renderer_);
        nemraRendererSetHaltCondition(renderer_, 0.0, 4.0, NEMRA_HALT_STOPS);
        nemraRendererSetFinishedCallback(renderer_, this, [](void* user, nemra_raw_t* raw) {
            static_cast<Host*>(user)->note([&](Host& host) {
                ++host.finished_;
                host.raw_ = raw;
            });
        });
        nemraRendererSetMessageCallback(renderer_, this, [](void* user, const char*, const char*, LogLevel_t level) {
            static_cast<Host*>(user)->note([&](Host& host) { host.errors_ += level == NEMRA_LOG_ERROR; });
        });
    }
    ~Host() { nemraRendererRelease(&renderer_); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    bool start(const std::string& file) {
        forget();
        return file.empty() ? nemraRendererStartData(renderer_, kScene.data(), static_cast<unsigned>(kScene.size()))
                            : nemraRendererStart(renderer_, file.c_str());
    }
    bool waitForFinish() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 10s, [&] { return finished_ > 0; });
    }
    bool waitForError() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 10s, [&] { return errors_ > 0; });
    }
    /// Luminances of the last result; empty if there is none.
    std::vector<double> picture() {
        nemra_raw_t* raw = nullptr;
        {
            const std::lock_guard lock(mutex_);
            raw = raw_;
        }
        std::vector<double> values;
        for (int x = 0; x < nemraRawWidth(raw); ++x)
            for (int y = 0; y < nemraRawHeight(raw); ++y) values.push_back(nemraRawGetLightQuantity(raw, 1, x, y, 0));
        return values;
    }

private:
    template <class Body>
    void note(const Body& body) {
        {
            const std::lock_guard lock(mutex_);
            body(*this);
        }
        changed_.notify_all();
    }
    void forget() {
        const std::lock_guard lock(mutex_);
        finished_ = errors_ = 0;
        raw_ = nullptr;
    }

    nemra_renderer_t* renderer_;
    std::mutex mutex_;
    std::condition_variable changed_;
    int finished_ = 0;
    int errors_ = 0;
    nemra_raw_t* raw_ = nullptr;
};

/// Threads of renders that are under way.
int renderThreads() {
    int count = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(thread.path() / "comm"), name);
        count += name == "nemra-render" || name == "nemra-conduct";
    }
    return count;
}

bool waitForThreads() {
    for (int i = 0; i < 1000; ++i) {
        if (renderThreads() == 0) return true;
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

class FailingRender : public testing::TestWithParam<Counted> {
protected:
    static void SetUpTestSuite() { nemraNode_register(); }

    void SetUp() override {
        Host host;
        ASSERT_TRUE(host.start(""));
        ASSERT_TRUE(host.waitForFinish());
        expected_ = host.picture();
        ASSERT_EQ(expected_.size(), 24U * 16U);
    }

    /// Starts with the n-th allocation failing. False if it didn't come to that.
    bool survives(Host& host, const std::string& file, long n) {
        FailingMemory memory(GetParam(), n);
        const bool started = host.start(file);
        const bool failedHere = GetParam() == Counted::here && memory.end();
        if (started) {
            EXPECT_TRUE(host.waitForFinish()) << "a render that doesn't end, " << n;
        }
        const bool failed = GetParam() == Counted::here ? failedHere : memory.end();
        EXPECT_TRUE(started || failed) << "a refusal for no reason, " << n;
        if (!started) {
            EXPECT_TRUE(host.waitForError()) << "a refusal without a message, " << n;
        }
        EXPECT_TRUE(waitForThreads()) << "a render that goes on unseen, " << n;
        return failed;
    }

    /// `thinning`: after so many allocations every second is left out, after twice as many two of three, and so on.
    void everyAllocationFailsOnce(const std::string& file, long thinning) {
        Host host;
        bool failed = true;
        long n = 1;
        for (; failed && n < 20000; n += 1 + n / thinning) {
            failed = survives(host, file, n);
            ASSERT_FALSE(HasFailure()) << n;
            ASSERT_TRUE(host.start(file)) << n;
            ASSERT_TRUE(host.waitForFinish()) << n;
            ASSERT_EQ(host.picture(), expected_) << n;
        }
        EXPECT_FALSE(failed) << "there are more allocations than were tried";
    }

    std::vector<double> expected_;
};

TEST_P(FailingRender, FromAFile) {
    const auto file = std::filesystem::temp_directory_path() / ("failing_render_" + std::to_string(getpid()) + ".svxml");
    std::ofstream(file) << kScene;
    everyAllocationFailsOnce(file.string(), 20);
    std::filesystem::remove(file);
}

TEST_P(FailingRender, FromData) { everyAllocationFailsOnce("", GetParam() == Counted::here ? 1000 : 20); }

INSTANTIATE_TEST_SUITE_P(Allocations, FailingRender, testing::Values(Counted::here, Counted::everywhere),
                         [](const auto& info) { return info.param == Counted::here ? "OfTheStart" : "OfAnyThread"; });

}  // namespace
}  // namespace nemra::test
