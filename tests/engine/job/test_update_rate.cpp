// How often renders show what they have.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "engine/core/job/update_rate.h"

namespace nemra::test {
namespace {

using Rate = core::UpdateRate;
using Seconds = std::chrono::duration<double>;

struct Shown {
    std::vector<double> times;
    double spent = 0.0;
    double worst = 0.0;  ///< share of the render's time right after an update, but for the first one
};

/// A render of some minutes on threads that get a part of a processor each.
Shown show(int threads, double part, std::size_t bytes, double cost) {
    std::mt19937 random(3);
    Rate rate(threads, bytes);
    const Rate::Clock::time_point start{};
    rate.begin(start);
    Shown shown;
    auto now = start;
    for (int asked = 0; asked < 100000 && Seconds(now - start).count() < 300.0; ++asked) {
        now = std::max(now + std::chrono::microseconds(1), rate.next());
        const double elapsed = Seconds(now - start).count();
        const double rendered = elapsed * threads * part;
        if (!rate.isDue(now, rendered)) continue;
        const double took = cost * std::uniform_real_distribution<>(0.8, 1.2)(random);
        rate.add(took);
        shown.times.push_back(elapsed);
        if (shown.times.size() == 1) continue;
        shown.spent += took;
        shown.worst = std::max(shown.worst, shown.spent / rendered);
    }
    return shown;
}

TEST(UpdateRate, SmallPicturesAreShownInGrowingIntervals) {
    const Shown shown = show(2, 1.0, 4 << 20, 0.002);
    ASSERT_GT(shown.times.size(), 30U);
    EXPECT_NEAR(shown.times[0], 1.0, 0.01);
    EXPECT_NEAR(shown.times[1], 2.25, 0.01);
    EXPECT_NEAR(shown.times.back() - shown.times[shown.times.size() - 2], 10.0, 0.01);
}

TEST(UpdateRate, NeverTakesMoreThanAHundredthOfTheRendersTime) {
    for (const double part : {1.0, 0.2}) {
        const Shown large = show(2, part, 540 << 20, 0.35);
        ASSERT_GE(large.times.size(), part == 1.0 ? 9U : 2U);
        EXPECT_LT(large.times[0], 1.1) << "the first picture is due whatever it costs";
        EXPECT_LE(large.worst, 0.01);
        const Shown unexpected = show(2, part, 540 << 20, 0.9);  // memory is slower than was thought
        EXPECT_GE(unexpected.times.size(), 1U);
        EXPECT_LE(unexpected.spent / (300.0 * 2 * part), 0.01);
    }
    EXPECT_LT(show(64, 1.0, 540 << 20, 0.35).times[1], 3.0) << "many threads can bear more of them";
}

}  // namespace
}  // namespace nemra::test
