// Who gets in to a worker's port, through real sockets.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "engine/core/worker/load_network.h"

namespace nemra::test {
namespace {

using namespace std::chrono_literals;
using network::Event;

class NetworkDoor : public ::testing::Test {
protected:
    using Clock = std::chrono::steady_clock;

    void SetUp() override {
        ASSERT_TRUE(network_);
        listener_ = network_->listen(true, 0, right_, -1, why_);
        ASSERT_TRUE(listener_) << why_;
    }

    std::unique_ptr<network::Link> knock(const network::Keys& keys) {
        return network_->connect("127.0.0.1", listener_->port(), keys, -1, why_);
    }

    /// How long each of these waits for its answer, s; negative for a no.
    std::vector<double> answersTo(const std::vector<std::unique_ptr<network::Link>>& links) {
        std::vector<double> answers(links.size(), 0.0);
        const auto began = Clock::now();
        std::string peer, message;
        for (std::size_t answered = 0; answered < links.size() && Clock::now() - began < 20s;) {
            listener_->wait(5, peer, message);
            for (std::size_t i = 0; i < links.size(); ++i) {
                if (answers[i] != 0.0) continue;
                const Event event = links[i]->wait(0, false, message);
                if (event != Event::connected && event != Event::closed) continue;
                const double after = std::chrono::duration<double>(Clock::now() - began).count();
                answers[i] = event == Event::connected ? after : -after;
                ++answered;
            }
        }
        return answers;
    }

    const network::Network* const network_ = core::worker::loadNetwork();
    const network::Keys right_ = network_->deriveKeys("the right one");
    const network::Keys wrong_ = network_->deriveKeys("another");
    std::string why_;
    std::unique_ptr<network::Listener> listener_;
};

TEST_F(NetworkDoor, OneWhoKnowsThePasswordGetsInAtOnceAndTheWorkerProvesThatItDoesToo) {
    std::vector<std::unique_ptr<network::Link>> links;
    for (int i = 0; i < 2; ++i) links.push_back(knock(right_));
    const auto answers = answersTo(links);
    for (const double after : answers) EXPECT_GT(after, 0.0);
    EXPECT_LT(*std::min_element(answers.begin(), answers.end()), 0.9) << "a busy machine may keep one of them waiting";
    EXPECT_NE(links[0]->challenge(), links[1]->challenge());
    const network::Hash proof = listener_->proof(links[0]->challenge());
    EXPECT_TRUE(links[0]->isProof(proof));
    EXPECT_FALSE(links[1]->isProof(proof)) << "it is that of another challenge";
    const auto other = network_->listen(true, 0, wrong_, -1, why_);
    EXPECT_FALSE(links[0]->isProof(other->proof(links[0]->challenge())));
}

// Else many connections at once would try as many passwords, and know the right one by the speed of the answer.
TEST_F(NetworkDoor, WrongKeysAreLookedAtOneInASecondAndWhatFollowsFromThereWaits) {
    std::vector<std::unique_ptr<network::Link>> links;
    links.push_back(knock(wrong_));
    EXPECT_LT(answersTo(links)[0], -1.0) << "no sooner than after a second";
    links.clear();
    for (int i = 0; i < 2; ++i) links.push_back(knock(wrong_));
    std::string peer, message;
    for (const auto until = Clock::now() + 700ms; Clock::now() < until;) {  // for them to have asked, on a busy machine too
        listener_->wait(5, peer, message);
        for (const auto& link : links) link->wait(0, false, message);
    }
    links.push_back(knock(right_));
    const auto answers = answersTo(links);
    EXPECT_LT(answers[0], 0.0);
    EXPECT_LT(answers[1], 0.0);
    EXPECT_GT(answers[2], 0.8) << "after both of them, of which the second waits for two seconds";
}

}  // namespace
}  // namespace nemra::test
