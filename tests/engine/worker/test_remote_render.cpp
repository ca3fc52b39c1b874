// Renders through real sockets: a server and a renderer of this process, so that sanitizers see both ends.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <random>
#include <thread>

#include "engine/core/job/load_scene.h"
#include "engine/core/worker/load_network.h"
#include "engine/core/worker/messages.h"
#include "engine/core/worker/server.h"
#include "engine/core/worker/wake.h"
#include "engine/node/node_class.h"
#include "tests/engine/job/recorder.h"

namespace nemra::test {
namespace {

using namespace core;
using namespace std::chrono_literals;

std::string smallBox() {
    std::ifstream file(NEMRA_SOURCE_DIR "/sarvo/examples/cornellbox.svxml");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    for (const char* const name : {"width", "height"}) {
        const std::string whole = "name=\"" + std::string(name) + "\" value=\"512\"";
        text.replace(text.find(whole), whole.size(), "name=\"" + std::string(name) + "\" value=\"64\"");
    }
    return text;
}

class RemoteRender : public ::testing::Test {
protected:
    RemoteRender() {
        node::registerClasses();
        port_ = server_->open(0);
    }
    ~RemoteRender() override {
        server_->close();
        server_->release();
    }

    std::shared_ptr<Renderer> renderer(double spp, int localThreads = 0) const {
        auto made = std::make_shared<Renderer>();
        made->setParameter("password", "for tests");
        made->setParameter("remote_host", "127.0.0.1:" + std::to_string(port_));
        made->addRemoteNode();
        if (localThreads > 0) {
            made->setParameter("num_threads", std::to_string(localThreads));
            made->addLocalNode();
        }
        made->setHalt({0.0, spp, NEMRA_HALT_STOPS});
        return made;
    }
    Renderer::Loader box() const {
        return [text = box_](const Settings& settings, RenderPlaces places) { return loadSceneBytes(text, settings, places); };
    }
    static std::vector<double> numbersOf(nemra_raw_t* raw) {
        std::vector<double> numbers;
        for (int x = 0; x < 64; ++x) {
            for (int y = 0; y < 64; ++y) {
                for (int c = 0; c < 3; ++c) numbers.push_back(nemraRawGetLightQuantity(raw, c, x, y, NEMRA_QUANTITY_RAW));
            }
        }
        return numbers;
    }

    const std::string box_ = smallBox();
    const std::shared_ptr<worker::Server> server_ =
        std::make_shared<worker::Server>(worker::ServerSettings{2, {}, "for tests", true});
    int port_ = 0;
};

TEST_F(RemoteRender, GivesTheNumbersOfALocalOne) {
    ASSERT_NE(port_, 0);
    std::vector<std::vector<double>> found;
    for (const int localThreads : {0, 1}) {
        Recorder& recorder = makeRecorder();
        const auto made = renderer(20, localThreads);
        recorder.attach(*made);
        ASSERT_TRUE(made->start(box()));
        ASSERT_TRUE(recorder.waitFor([](const Recorder& r) { return !r.finished.empty(); }, 60000));
        found.push_back(numbersOf(recorder.finished[0]));
        made->release();
    }
    Recorder& recorder = makeRecorder();
    const auto local = rendererWith(2, {0.0, 20.0, NEMRA_HALT_STOPS});
    recorder.attach(*local);
    ASSERT_TRUE(local->start(box()));
    ASSERT_TRUE(recorder.waitFor([](const Recorder& r) { return !r.finished.empty(); }, 60000));
    const auto expected = numbersOf(recorder.finished[0]);
    for (const auto& numbers : found) EXPECT_EQ(numbers, expected);
    local->release();
}

TEST_F(RemoteRender, BearsStormsOfControlFromSeveralThreads) {
    const auto made = renderer(0, 1);
    Recorder& recorder = makeRecorder();
    recorder.attach(*made);
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 3; ++seed) {
        threads.emplace_back([&, seed] {
            std::mt19937 random(seed);
            for (int turn = 0; turn < 60; ++turn) {
                switch (random() % 6) {
                    case 0:
                        made->start(box());
                        break;
                    case 1:
                        made->stop();
                        break;
                    case 2:
                        made->setPaused(true);
                        break;
                    case 3:
                        made->setPaused(false);
                        break;
                    case 4:
                        made->updateRaw();
                        break;
                    default:
                        server_->sendMessage("storm", "blows", NEMRA_LOG_INFO);
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(random() % 5));
            }
        });
    }
    for (auto& thread : threads) thread.join();
    made->stop();
    EXPECT_TRUE(
        recorder.waitFor([](const Recorder& r) { return r.states.empty() || r.states.back() == NEMRA_RENDERER_IDLE; }, 20000));
    made->release();
}

TEST_F(RemoteRender, GoesOnAfterTheServerWasClosedAndOpenedAgain) {
    Recorder& recorder = makeRecorder();
    const auto made = renderer(0);
    recorder.attach(*made);
    ASSERT_TRUE(made->start(box()));
    const auto sampled = [&](double more) {
        const double before = made->statistic(NEMRA_STAT_SAMPLES);
        return recorder.waitFor([&](const Recorder&) { return made->statistic(NEMRA_STAT_SAMPLES) >= before + more; }, 30000);
    };
    EXPECT_TRUE(sampled(1000));
    server_->close();
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(server_->open(port_), port_);
    std::this_thread::sleep_for(100ms);
    EXPECT_TRUE(sampled(1000));
    made->stop();
    EXPECT_TRUE(recorder.waitForFinish());
    made->release();
}

/// Somebody who lets a client in but doesn't know the password, such as one who sits in the middle: gets no scene.
TEST_F(RemoteRender, ShowsNothingToAWorkerThatProvesNothing) {
    const network::Network& network = *worker::loadNetwork();
    network::Keys keys = network.deriveKeys("for tests");
    keys.proof = network.deriveKeys("another").proof;
    const worker::Wake wake;
    std::string why;
    const auto listener = network.listen(true, 0, keys, wake.descriptor(), why);
    ASSERT_TRUE(listener) << why;
    std::atomic<bool> isOver{false};
    std::atomic<int> greeted{0}, told{0};
    std::thread stranger([&] {
        std::string peer, bytes;
        while (!isOver) {
            if (listener->wait(20, peer, bytes) != network::Event::message) continue;
            const auto message = worker::decode(bytes);
            if (const auto* const hello = message ? std::get_if<worker::Hello>(&*message) : nullptr) {
                ++greeted;
                listener->send(peer, worker::encode(worker::Welcome{1, 0, listener->proof(hello->challenge)}));
                listener->send(peer, worker::encode(worker::Turn{}));
            } else {
                ++told;
            }
        }
    });
    const auto made = renderer(1);
    made->clearNodes();
    made->setParameter("remote_host", "127.0.0.1:" + std::to_string(listener->port()));
    made->setParameter("remote_patience", "1.5");
    made->addRemoteNode();
    Recorder& recorder = makeRecorder();
    recorder.attach(*made);
    EXPECT_TRUE(made->start(box()));
    EXPECT_TRUE(recorder.waitForFinish()) << "it is patient with workers, not with strangers";
    const auto said = [&](std::string_view part) {
        return std::count_if(recorder.messages.begin(), recorder.messages.end(),
                             [&](const std::string& message) { return message.find(part) != std::string::npos; });
    };
    EXPECT_EQ(said("turned away"), 1);
    EXPECT_EQ(said("no render worker is left"), 1);
    isOver = true;
    stranger.join();
    EXPECT_GT(greeted, 1);
    EXPECT_EQ(told, 0);
    made->release();
}

}  // namespace
}  // namespace nemra::test
