#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "engine/common/slot_table.h"

namespace nemra {
namespace {

struct Thing {
    explicit Thing(int number) : number(number) {}
    ~Thing() { number = -1; }
    std::atomic<int> number;
};

TEST(SlotTable, AnswersNullForWhatIsNotCurrent) {
    auto* const handle = publish<nemra_server_t>(std::make_shared<Thing>(7));
    EXPECT_EQ(find<Thing>(handle)->number, 7);
    EXPECT_EQ(find<Thing>(static_cast<nemra_server_t*>(nullptr)), nullptr);
    EXPECT_EQ(find<Thing>(reinterpret_cast<nemra_scene_t*>(handle)), nullptr) << "a handle of another kind";
    for (const std::uint64_t id : {std::uint64_t{1}, ~std::uint64_t{0}, std::uint64_t{1} << 63, toId(handle) + 1,
                                   toId(handle) | (std::uint64_t{1} << 40)}) {
        EXPECT_EQ(find<Thing>(toHandle<nemra_server_t>(id)), nullptr) << id;
        EXPECT_EQ(findHot<Thing>(toHandle<nemra_server_t>(id)), nullptr) << id;
    }
    nemra_server_t* field = handle;
    EXPECT_TRUE(retire(&field));
    EXPECT_EQ(field, nullptr);
    EXPECT_EQ(find<Thing>(handle), nullptr);
    EXPECT_EQ(findHot<Thing>(handle), nullptr);
    field = handle;
    EXPECT_FALSE(retire(&field)) << "a second release does nothing";
    EXPECT_FALSE(retire(static_cast<nemra_server_t**>(nullptr)));
}

// Handles cross a script as positive 32-bit numbers, and an old number never means a new object.
TEST(SlotTable, IdsFitIn31BitsAndNeverComeTwice) {
    std::set<std::uint64_t> seen;
    const auto thing = std::make_shared<Thing>(1);
    SlotTable& table = SlotTable::of(Kind::instance);
    for (int i = 0; i < 600000; ++i) {  // more than twice the generations of the free pool
        const std::uint64_t id = table.publish(thing, true);
        ASSERT_GT(id, 0U);
        ASSERT_LT(id, std::uint64_t{1} << 31);
        ASSERT_TRUE(seen.insert(id).second);
        ASSERT_EQ(table.retire(id), thing);
    }
    EXPECT_EQ(table.size(), 0U);
}

TEST(SlotTable, GrowsIntoTheUpperHalf) {
    const auto thing = std::make_shared<Thing>(3);
    SlotTable& table = SlotTable::of(Kind::geometry);
    std::vector<std::uint64_t> ids;
    for (int i = 0; i < 300000; ++i) ids.push_back(table.publish(thing, true));
    EXPECT_GT(ids.back(), std::uint64_t{1} << 32);
    EXPECT_EQ(table.find(ids.back()), thing);
    EXPECT_EQ(std::set<std::uint64_t>(ids.begin(), ids.end()).size(), ids.size());
    for (const std::uint64_t id : ids) EXPECT_NE(table.retire(id), nullptr);
}

TEST(SlotTable, AWeakIdGoesStaleWithItsObject) {
    SlotTable& table = SlotTable::of(Kind::renderer);
    auto thing = std::make_shared<Thing>(5);
    const std::uint64_t id = table.publish(thing, false);
    EXPECT_EQ(table.find(id), thing);
    ASSERT_TRUE(table.hold(id, thing));
    const std::weak_ptr<Thing> watch = thing;
    thing.reset();
    EXPECT_FALSE(watch.expired());
    table.letGo(id).reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(table.find(id), nullptr);
    table.retire(id);
    EXPECT_FALSE(table.hold(id, std::make_shared<Thing>(6)));
}

TEST(SlotTable, ReleaseOnThisThreadFreesWhatTheHotCacheKept) {
    auto thing = std::make_shared<Thing>(5);
    const std::weak_ptr<Thing> watch = thing;
    auto* handle = publish<nemra_raw_t>(thing);
    thing.reset();
    EXPECT_EQ(findHot<Thing>(handle)->number, 5);
    EXPECT_EQ(findHot<Thing>(handle)->number, 5);
    retire(&handle);
    EXPECT_TRUE(watch.expired());
}

// Readers on other threads meet an object whole or not at all while ids come and go. Meant for the thread sanitizer.
TEST(SlotTable, LooksUpWhileOthersPublishAndRetire) {
    SlotTable& table = SlotTable::of(Kind::scene);
    constexpr int kWriters = 2;
    constexpr int kReaders = 2;
    std::array<std::atomic<std::uint64_t>, 8> shared{};
    std::atomic<bool> done{false};
    std::atomic<int> torn{0};
    std::atomic<std::uint64_t> met{0};
    std::vector<std::thread> readers;
    for (int r = 0; r < kReaders; ++r) {
        readers.emplace_back([&, r] {
            for (std::size_t i = 0; !done; ++i) {
                const std::uint64_t id = shared[i % shared.size()];
                if (r == 0) {
                    if (const auto thing = std::static_pointer_cast<Thing>(table.find(id))) {
                        ++met;
                        if (thing->number <= 0) ++torn;
                    }
                } else if (auto* const thing = findHot<Thing>(toHandle<nemra_scene_t>(id))) {
                    ++met;
                    if (thing->number <= 0) ++torn;
                }
            }
        });
    }
    std::vector<std::thread> writers;
    for (int w = 0; w < kWriters; ++w) {
        writers.emplace_back([&, w] {
            for (int i = 1; i <= 20000; ++i) {
                auto& place = shared[static_cast<std::size_t>((i * kWriters + w) % int(shared.size()))];
                const std::uint64_t old = place.exchange(table.publish(std::make_shared<Thing>(i), true));
                table.retire(old);
            }
        });
    }
    for (auto& writer : writers) writer.join();
    done = true;
    for (auto& reader : readers) reader.join();
    EXPECT_EQ(torn, 0);
    for (auto& place : shared) table.retire(place);
    EXPECT_EQ(table.size(), 0U);
}

}  // namespace
}  // namespace nemra
