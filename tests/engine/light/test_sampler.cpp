#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "engine/core/kernel/sampler.h"

namespace nemra::core {
namespace {

using namespace kernel_baseline;

std::uint32_t reversed(std::uint32_t x) { return reverseBits(x); }

/// Every way to cut the square into 2^m equal dyadic boxes holds one of 2^m points: a (0, m, 2)-net, for any pixel and set.
TEST(Sampler, PairsAreStratifiedInEveryDyadicCut) {
    for (const std::uint32_t set : {0U, 3U, 17U}) {
        for (const std::uint32_t pixel : {1U, 0xDEADBEEFU}) {
            for (const int m : {4, 8, 10}) {
                for (int across = 0; across <= m; ++across) {
                    std::set<std::uint32_t> boxes;
                    for (std::uint32_t i = 0; i < 1U << m; ++i) {
                        const auto p = samplePair(reversed(i), pixel, set);
                        const auto x = static_cast<std::uint32_t>(std::uint64_t{p.first} << across >> 32);
                        const auto y = static_cast<std::uint32_t>(std::uint64_t{p.second} << (m - across) >> 32);
                        boxes.insert(x << (m - across) | y);
                    }
                    EXPECT_EQ(boxes.size(), std::size_t{1} << m);
                }
            }
        }
    }
}

/// Sets must be independent of one another: products of coordinates of different sets average to the product of their means.
TEST(Sampler, SetsAndPixelsAreUncorrelated) {
    constexpr std::uint32_t kCount = 1 << 16;
    const auto mean = [&](auto&& product) {
        double sum = 0.0;
        for (std::uint32_t i = 0; i < kCount; ++i) sum += product(i);
        return sum / kCount;
    };
    const auto centred = [](std::uint32_t bits) { return bits * 0x1p-32 - 0.5; };
    // Independent coordinates give a standard deviation of 1/12 / sqrt(n) = 3.3e-4.
    for (std::uint32_t other = 1; other < 12; ++other) {
        EXPECT_NEAR(mean([&](std::uint32_t i) {
                        return centred(samplePair(reversed(i), 7U, 0U).first) *
                               centred(samplePair(reversed(i), 7U, other).second);
                    }),
                    0.0, 1.5e-3);
    }
    // Across pixels, at one sample index.
    EXPECT_NEAR(mean([&](std::uint32_t i) {
                    const std::uint32_t here = pixelSeed(i % 256, i / 256, 0);
                    const std::uint32_t there = pixelSeed(i % 256 + 1, i / 256, 0);
                    return centred(samplePair(0U, here, 0U).first) * centred(samplePair(0U, there, 0U).first);
                }),
                0.0, 1.5e-3);
}

TEST(Sampler, LanesComputeWhatScalarsDo) {
    for (std::uint32_t base = 0; base < 64; ++base) {
        BitsN index{}, pixel{}, set{};
        for (int lane = 0; lane < kLanes; ++lane) {
            index[lane] = reversed(base * 31 + lane);
            pixel[lane] = pixelSeed(base, lane, 5);
            set[lane] = base % 9;
        }
        const auto all = samplePair(index, pixel, set);
        for (int lane = 0; lane < kLanes; ++lane) {
            const auto one = samplePair(std::uint32_t{index[lane]}, std::uint32_t{pixel[lane]}, std::uint32_t{set[lane]});
            EXPECT_EQ(all.first[lane], one.first);
            EXPECT_EQ(all.second[lane], one.second);
        }
    }
}

}  // namespace
}  // namespace nemra::core
