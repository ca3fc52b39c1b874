// Work that is given away: all of it is done, and what goes wrong in it comes back.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <new>

#include "engine/core/output/helpers.h"

namespace nemra::test {
namespace {

using core::Helpers;

TEST(Helpers, UseAllThatIsGiven) {
    for (const std::size_t threads : {std::size_t{0}, std::size_t{3}}) {
        std::atomic<int> sum{0};
        Helpers<int, std::function<void(int)>> helpers([&](int piece) { sum += piece; }, threads);
        for (int piece = 1; piece <= 1000; ++piece) helpers.give(piece);
        helpers.finish();
        EXPECT_EQ(sum, 500500);
    }
}

TEST(Helpers, MemoryThatEndsEndsTheCallNotTheProcess) {
    for (const std::size_t threads : {std::size_t{0}, std::size_t{3}}) {
        const auto useAll = [threads] {
            Helpers<int, std::function<void(int)>> helpers(
                [](int piece) {
                    if (piece == 500) throw std::bad_alloc();
                },
                threads);
            for (int piece = 1; piece <= 1000; ++piece) helpers.give(piece);
            helpers.finish();
        };
        EXPECT_THROW(useAll(), std::bad_alloc);
    }
}

}  // namespace
}  // namespace nemra::test
