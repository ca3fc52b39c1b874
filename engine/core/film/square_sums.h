/// Sums of squares that come out the same in any order of adding, whatever the range of the numbers.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "engine/common/paged_memory.h"

namespace nemra::core {

/// Numbers are cut at fixed places, every 32 binary digits. Kept are, as whole numbers, the sum of what lies in the highest part
/// that any of them reached, and the sum in the part below it. Both sums are exact, and which parts they are depends on the
/// largest number alone, so neither order nor grouping changes them (binned summation: Demmel and Nguyen, "Parallel Reproducible
/// Summation", IEEE Trans. Computers 64(7), 2015, here with integers). Each number loses less than 2^-32 of the largest one.
/// Holds for 2^32 numbers.
struct SquareSum {
    std::uint64_t upper = 0;
    std::uint64_t lower = 0;
    std::uint32_t part = 0;  ///< which part `upper` counts: that of the numbers below 2^(32 (part + 1) - 1023)

    bool operator==(const SquareSum&) const = default;
};

/// A number alone; not below 0.
[[gnu::always_inline]] inline SquareSum squareSum(double number) noexcept {
    const auto bits = std::bit_cast<std::uint64_t>(number);
    const std::uint64_t exponent = bits >> 52;
    const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
    const std::uint64_t digits = exponent == 0 ? 0 : (std::uint64_t{1} << 52) | fraction;
    const std::uint64_t within = exponent % 32;
    return {digits >> (52 - within), (digits << (12 + within)) >> 32, static_cast<std::uint32_t>(exponent / 32)};
}

[[gnu::always_inline]] inline void add(SquareSum& sum, const SquareSum& other) noexcept {
    if (other.part > sum.part) [[unlikely]] {
        sum.lower = other.part - sum.part == 1 ? sum.upper : 0;
        sum.upper = 0;
        sum.part = other.part;
    }
    const std::uint32_t below = sum.part - other.part;
    sum.upper += below == 0 ? other.upper : 0;
    sum.lower += below == 0 ? other.lower : below == 1 ? other.upper : 0;
}

inline double total(const SquareSum& sum) noexcept {
    const double counted = static_cast<double>(sum.upper) * 4294967296.0 + static_cast<double>(sum.lower);
    return std::ldexp(counted, 32 * (static_cast<int>(sum.part) - 1) - 1023);
}

/// One sum per pixel, 17 bytes each.
struct SquareSums {
    PagedVector<std::uint64_t> upper;
    PagedVector<std::uint64_t> lower;
    PagedVector<std::uint8_t> part;

    std::size_t size() const noexcept { return part.size(); }
    /// Makes them so many, all 0.
    void resize(std::size_t pixels) {
        const auto zeros = [pixels](auto& array) {
            array.clear();
            array.resize(pixels);  // touches no page of a new block (see PagedAllocator)
        };
        zeros(upper);
        zeros(lower);
        zeros(part);
    }

    SquareSum at(std::size_t pixel) const noexcept { return {upper[pixel], lower[pixel], part[pixel]}; }
    void put(std::size_t pixel, const SquareSum& sum) noexcept {
        upper[pixel] = sum.upper;
        lower[pixel] = sum.lower;
        part[pixel] = static_cast<std::uint8_t>(sum.part);
    }
    /// For a sum of which no more is known than its value.
    void put(std::size_t pixel, double value) noexcept {
        put(pixel, squareSum(std::min(value, std::numeric_limits<double>::max())));
    }

    bool operator==(const SquareSums&) const = default;
};

}  // namespace nemra::core
