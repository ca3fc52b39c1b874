// What clients and workers say to each other, as bytes that nobody vouches for.
#include <gtest/gtest.h>

#include <random>

#include "engine/core/worker/incoming.h"
#include "engine/core/worker/messages.h"
#include "engine/core/worker/remote_address.h"
#include "engine/core/worker/result_stream.h"
#include "engine/network/network.h"

namespace nemra::test {
namespace {

using namespace core::worker;

/// One of each kind, with every field set.
std::vector<std::string> examples() {
    const std::string part(1000, 'p');
    Work work;
    work.items = {{7, {{1, 2, 3, 4}, 5, 6}}, {8, {{-1, 0, 16, 16}, 0xFFFFFF00U, 64}}};
    const std::vector<Message> messages{Hello{kProtocol, "engine", {4, 5}},
                                        SceneOffer{{1, 2, 3}, 12345678901ULL, "set\xC3\xBCp"},
                                        ScenePart{99, part},
                                        work,
                                        Pause{true},
                                        Goodbye{},
                                        Welcome{4, 1, {6, 7}},
                                        Turn{},
                                        Need{17},
                                        Ready{},
                                        Failed{"why", true},
                                        ResultPart{part},
                                        Said{"source", "text", NEMRA_LOG_ERROR},
                                        Alive{}};
    std::vector<std::string> bytes;
    for (const Message& message : messages) bytes.push_back(encode(message));
    return bytes;
}

TEST(WorkerMessages, ComeBackAsTheyWere) {
    const auto all = examples();
    EXPECT_EQ(all.size(), std::variant_size_v<Message>);
    for (std::size_t kind = 0; kind < all.size(); ++kind) {
        const auto message = decode(all[kind]);
        ASSERT_TRUE(message) << kind;
        EXPECT_EQ(message->index(), kind);
        EXPECT_EQ(encode(*message), all[kind]);
    }
    const auto work = std::get<Work>(*decode(all[3]));
    EXPECT_EQ(work.items[1].piece.tile.x0, -1);
    EXPECT_EQ(work.items[1].piece.first, 0xFFFFFF00U);
}

TEST(WorkerMessages, CutOrLengthenedOnesAreNone) {
    for (const std::string& whole : examples()) {
        if (whole.size() > 1000) continue;  // it ends in a part, which may be of any length
        for (std::size_t size = 0; size < whole.size(); ++size) EXPECT_FALSE(decode({whole.data(), size}));
        EXPECT_FALSE(decode(whole + "x"));
    }
    EXPECT_FALSE(decode(std::string("\xFF", 1)));
}

TEST(WorkerMessages, DamagedOnesNeverTakeMoreThanTheyBring) {
    std::mt19937 random(5);
    for (int turn = 0; turn < 20000; ++turn) {
        auto bytes = examples()[random() % std::variant_size_v<Message>];
        for (unsigned flips = 1 + random() % 4; flips > 0; --flips)
            bytes[random() % bytes.size()] ^= static_cast<char>(1U << random() % 8);
        const auto message = decode(bytes);
        EXPECT_TRUE(!message || encode(*message) == bytes);
    }
    // A count that the rest has no room for.
    std::string work = encode(Work{});
    work[1] = '\x7F';
    EXPECT_FALSE(decode(work));
}

TEST(WorkerMessages, TheLargestFitTheNetwork) {
    const std::string part(kPartBytes, 'p');
    Work work;
    work.items.resize(kMostPieces);
    for (const Message& message : {Message(ScenePart{0, part}), Message(ResultPart{part}), Message(work),
                                   Message(Said{std::string(1 << 20, 's'), std::string(1 << 20, 't'), 0})}) {
        const std::string bytes = encode(message);
        EXPECT_LE(bytes.size(), network::kLargestMessage);
        EXPECT_TRUE(decode(bytes));
    }
}

TEST(WorkerMessages, PartsAreTakenInOrderAndNoFurtherThanAnnounced) {
    Incoming incoming(10);
    EXPECT_FALSE(incoming.add(1, std::string("ab")));
    EXPECT_TRUE(incoming.add(0, std::string("abcd")));
    EXPECT_FALSE(incoming.add(0, std::string("abcd")));
    EXPECT_FALSE(incoming.add(4, std::string()));
    EXPECT_FALSE(incoming.add(4, std::string("1234567")));
    EXPECT_TRUE(incoming.add(4, std::string("123456")));
    EXPECT_TRUE(incoming.isWhole());
    EXPECT_EQ(incoming.bytes().text(), "abcd123456");
}

TEST(WorkerMessages, ResultsComeOutOfTheStreamHoweverItWasCut) {
    std::string stream;
    appendResult(stream, {1, 2, 3, 5}, std::string("small"));
    appendResult(stream, {4, 5, 6, 1000}, std::string(1000, 'l'));
    appendResult(stream, {7, 0, 0, 0}, {});
    for (const std::size_t step : {1UL, 7UL, 40UL, 2000UL}) {
        ResultStream results;
        std::vector<std::uint64_t> found;
        for (std::size_t at = 0; at < stream.size(); at += step) {
            results.append(std::span<const char>(stream).subspan(at, std::min(step, stream.size() - at)));
            while (const auto head = results.head()) {
                const auto bytes = results.take(*head);
                if (!bytes) break;
                EXPECT_EQ(bytes->size(), head->size);
                found.push_back(head->id);
            }
        }
        EXPECT_EQ(found, (std::vector<std::uint64_t>{1, 4, 7})) << step;
        EXPECT_FALSE(results.head());
    }
}

TEST(RemoteAddress, HostPortAndBrackets) {
    EXPECT_EQ(parseAddress("host:12")->text(), "host:12");
    EXPECT_EQ(parseAddress("host")->port, kDefaultPort);
    EXPECT_EQ(parseAddress("[::1]:12")->host, "::1");
    EXPECT_EQ(parseAddress("[::1]:12")->text(), "[::1]:12");
    for (const char* const wrong : {"", ":1", "host:", "host:0", "host:65536", "host:1x", "::1", "[::1", "[::1]1", "[]:1"}) {
        EXPECT_FALSE(parseAddress(wrong)) << wrong;
    }
}

}  // namespace
}  // namespace nemra::test
