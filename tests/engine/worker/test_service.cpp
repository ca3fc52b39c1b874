// A worker's talk with its clients: turns, scenes that travel once, and clients that don't keep to the rules.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "engine/common/log.h"
#include "engine/core/api/version.h"
#include "engine/core/library/libraries.h"
#include "engine/core/worker/scene_parcel.h"
#include "engine/core/worker/service.h"
#include "engine/node/node_class.h"
#include "engine/node/read_scene.h"
#include "engine/node/svbin/svbin.h"
#include "tests/engine/worker/fake_network.h"

namespace nemra::test {
namespace {

using namespace core;
using namespace core::worker;

class WorkerService : public ::testing::Test {
protected:
    WorkerService() {
        std::ifstream file(NEMRA_SOURCE_DIR "/sarvo/examples/cornellbox.svxml");
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        node::registerClasses();
        node::Scene scene;
        EXPECT_TRUE(node::readScene(text, "test", scene));
        parcel_ = packScene(node::writeSvbin(scene));
        addLibrary(parcel_, libraryContent({}));
        offer_ = SceneOffer{network_.hash(parcel_.bytes()), parcel_.size(), ""};
    }

    void turns(int count = 5) {
        for (int i = 0; i < count; ++i) service_.turn();
    }
    template <class M>
    bool waitFor(const std::string& peer, int count = 1) {
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (listener_.count<M>(peer) < count && std::chrono::steady_clock::now() < until) service_.turn();
        return listener_.count<M>(peer) >= count;
    }
    void hello(const std::string& peer) {
        listener_.say(peer, Hello{kProtocol, kVersionText, {}});
        turns();
    }
    void sendScene(const std::string& peer) {
        for (std::size_t at = 0; at < parcel_.size(); at += kPartBytes) {
            listener_.say(peer, ScenePart{at, parcel_.bytes().subspan(at, std::min(kPartBytes, parcel_.size() - at))});
            turns(1);
        }
    }
    bool makeReady(const std::string& peer) {
        hello(peer);
        listener_.say(peer, offer_);
        turns();
        if (listener_.count<Need>(peer) > 0) sendScene(peer);
        return waitFor<Ready>(peer);
    }

    log::Capture quiet_{[](const log::Message&) {}};
    Buffer parcel_;
    SceneOffer offer_;
    FakeNetwork network_;
    FakeListener listener_;
    std::vector<bool> busy_;
    Service service_{network_, listener_, std::make_shared<Wake>(), [] { return ServerSettings{}; },
                     [this](bool busy) { busy_.push_back(busy); }};
};

TEST_F(WorkerService, RendersWhatItIsAskedForAndHasTheSceneNextTime) {
    ASSERT_TRUE(makeReady("a"));
    EXPECT_EQ(listener_.count<Need>("a"), 1);
    listener_.say("a", Work{{{5, {{0, 0, 16, 16}, 0, 4}}, {6, {{16, 0, 32, 16}, 0, 4}}}});
    ASSERT_TRUE(waitFor<ResultPart>("a"));
    listener_.say("a", Goodbye{});
    turns();
    EXPECT_EQ(busy_, (std::vector<bool>{true, false}));
    ASSERT_TRUE(makeReady("b"));
    EXPECT_EQ(listener_.count<Need>("b"), 0);
}

TEST_F(WorkerService, TheNextClientsTurnComesWhenTheFirstIsGone) {
    hello("a");
    hello("b");
    EXPECT_EQ(listener_.count<Turn>("a"), 1);
    EXPECT_EQ(listener_.count<Turn>("b"), 0);
    listener_.gone.insert("a");
    service_.tell({"server", "hello?", 0});  // the first that can't be sent shows that it is gone
    turns();
    EXPECT_EQ(listener_.count<Turn>("b"), 1);
    EXPECT_EQ(busy_, (std::vector<bool>{true}));
}

TEST_F(WorkerService, AnotherVersionIsToldSo) {
    listener_.say("a", Hello{kProtocol + 1, kVersionText, {}});
    listener_.say("b", Hello{kProtocol, "another engine", {}});
    turns();
    EXPECT_EQ(listener_.count<Failed>("a"), 1);
    EXPECT_EQ(listener_.count<Failed>("b"), 1);
    EXPECT_TRUE(busy_.empty());
}

TEST_F(WorkerService, TooManyClientsAreToldToComeAgain) {
    for (int i = 0; i < 40; ++i) listener_.say("peer" + std::to_string(i), Hello{kProtocol, kVersionText, {}});
    turns(50);
    EXPECT_EQ(listener_.count<Welcome>("peer31"), 1);
    EXPECT_EQ(listener_.count<Welcome>("peer32"), 0);
    ASSERT_EQ(listener_.count<Failed>("peer32"), 1);
    EXPECT_TRUE(std::get<Failed>(*decode(listener_.told["peer32"][0])).mayTryAgain);
}

TEST_F(WorkerService, ADamagedSceneIsRefused) {
    hello("a");
    listener_.say("a", offer_);
    turns();
    std::string damaged(parcel_.text());
    damaged[damaged.size() / 2] ^= 1;
    for (std::size_t at = 0; at < damaged.size(); at += kPartBytes) {
        listener_.say("a", ScenePart{at, std::span(damaged).subspan(at, std::min(kPartBytes, damaged.size() - at))});
    }
    EXPECT_TRUE(waitFor<Failed>("a"));
    EXPECT_EQ(listener_.count<Ready>("a"), 0);
    turns();
    EXPECT_EQ(busy_, (std::vector<bool>{true, false}));
}

TEST_F(WorkerService, AClientThatBreaksTheRulesIsDroppedAndTheNextServed) {
    const std::string part = "x";
    const std::vector<Message> wrong{Work{{{1, {{0, 0, 16, 16}, 0, 1}}}},  // without a scene
                                     ScenePart{0, part}, Ready{}, Said{"a", "b", 0}};
    int peer = 0;
    for (const Message& message : wrong) {
        const std::string name = "peer" + std::to_string(++peer);
        hello(name);
        listener_.say(name, message);
        turns();
        hello(name);  // it may begin anew
        EXPECT_EQ(listener_.count<Welcome>(name), 2) << message.index();
        listener_.say(name, Goodbye{});
        turns();
    }
    for (const Piece& piece :
         {Piece{{0, 0, 0, 16}, 0, 1}, Piece{{-1, 0, 16, 16}, 0, 1}, Piece{{0, 0, 16, 513}, 0, 1}, Piece{{0, 0, 16, 16}, 0, 0},
          Piece{{0, 0, 16, 16}, 0xFFFFFFFFU, 2}, Piece{{0, 0, 512, 512}, 0, 1}}) {
        const std::string name = "peer" + std::to_string(++peer);
        ASSERT_TRUE(makeReady(name));
        listener_.say(name, Work{{{1, piece}}});
        turns();
        EXPECT_EQ(listener_.count<ResultPart>(name), 0);
        hello(name);
        EXPECT_EQ(listener_.count<Welcome>(name), 2);
        listener_.say(name, Goodbye{});
        turns();
    }
}

TEST_F(WorkerService, NoFileIsReadForAClient) {
    node::Scene scene;
    scene.imports.push_back({"/etc/hostname", "", {}, true});
    Buffer parcel = packScene(node::writeSvbin(scene));
    addLibrary(parcel, libraryContent({}));
    std::string said;
    const log::Capture capture([&](const log::Message& message) { said += message.text; });
    EXPECT_EQ(prepareParcel(parcel.bytes(), "", {}), nullptr);
    EXPECT_NE(said.find("names files"), std::string::npos);
}

}  // namespace
}  // namespace nemra::test
