// Numbers of all kinds come back from their packing to the bit, in few bytes where they are multiples of a quantum, and no bytes
// whatever make the reader of packings go astray.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "engine/core/result/pack_numbers.h"

namespace nemra::test {
namespace {

template <class Number>
std::vector<char> pack(const std::vector<Number>& numbers) {
    std::vector<char> packed{'b', 'e', 'f', 'o', 'r', 'e'};
    core::packNumbers(std::span<const Number>(numbers), packed);
    EXPECT_EQ(std::string_view(packed.data(), 6), "before");
    packed.erase(packed.begin(), packed.begin() + 6);
    return packed;
}

template <class Number>
void expectBack(const std::vector<Number>& numbers, const std::string& what) {
    const auto packed = pack(numbers);
    std::vector<Number> again(numbers.size(), Number{77});
    ASSERT_TRUE(core::unpackNumbers(packed, std::span<Number>(again))) << what;
    if (numbers.empty()) return;
    ASSERT_EQ(std::memcmp(again.data(), numbers.data(), numbers.size() * sizeof(Number)), 0) << what;
    const std::span<const char> cut(packed.data(), packed.size() - 1);
    EXPECT_FALSE(core::unpackNumbers(cut, std::span<Number>(again))) << what << ", cut short";
}

TEST(PackNumbers, RealsOfAllKindsComeBack) {
    std::mt19937_64 random(5);
    const double infinity = std::numeric_limits<double>::infinity();
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{7}, std::size_t{4096}, std::size_t{4097}, std::size_t{9001}}) {
        for (const int exponent : {-1074, -1022, -950, -901, -900, -899, -60, -10, 0, 40, 846, 900, 960, 1018}) {
            for (const int bits : {1, 5, 23, 31, 52, 53}) {
                std::vector<double> numbers(size);
                for (double& number : numbers) {
                    number = std::ldexp(static_cast<double>(random() >> (64 - bits)) - std::ldexp(0.5, bits), exponent);
                }
                expectBack(numbers,
                           std::to_string(size) + " of " + std::to_string(bits) + " bits times 2^" + std::to_string(exponent));
            }
        }
    }
    for (const double odd :
         {-0.0, infinity, -infinity, std::nan("7"), 5.0e-324, 1.0e308, -1.0e308, 1.0e-300, 4611686018427387904.0}) {
        for (const std::size_t at : {0U, 17U, 4999U}) {
            std::vector<double> numbers(5000, 0.25);
            numbers[at] = odd;
            expectBack(numbers, std::to_string(odd));
        }
    }
    std::vector<double> anything(20000);
    for (double& number : anything) number = std::bit_cast<double>(random());
    expectBack(anything, "any bits");
    std::vector<float> floats(20000);
    for (float& number : floats) number = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    expectBack(floats, "any bits of floats");
    for (float& number : floats) number = std::ldexp(static_cast<float>(random() % 5000), -12);
    expectBack(floats, "floats of few bits");
}

TEST(PackNumbers, IntegersOfAllRangesComeBack) {
    std::mt19937_64 random(6);
    for (int bits = 1; bits <= 64; ++bits) {
        for (const std::uint64_t least : {std::uint64_t{0}, std::uint64_t{1000}, ~std::uint64_t{0} << 62}) {
            std::vector<std::uint64_t> wide(5000);
            for (auto& number : wide) number = least + (random() >> (64 - bits));
            expectBack(wide, std::to_string(bits) + " bits");
            std::vector<std::uint32_t> narrow(wide.begin(), wide.end());
            expectBack(narrow, std::to_string(bits) + " bits of 32");
            std::vector<std::uint8_t> bytes(wide.begin(), wide.end());
            expectBack(bytes, std::to_string(bits) + " bits of 8");
        }
    }
}

// What makes the files small: n samples between 0 and 2^k quanta take k + log2(n) bits.
TEST(PackNumbers, SumsInQuantaTakeTheirBits) {
    std::mt19937_64 random(7);
    std::vector<double> sums(64 * 4096);
    for (double& sum : sums) sum = std::ldexp(static_cast<double>(random() >> 40), -20);  // 24 bits
    EXPECT_LE(pack(sums).size(), sums.size() * 3 + 64 * 11);
    EXPECT_GE(pack(sums).size(), sums.size() * 3);
    EXPECT_EQ(pack(std::vector<std::uint32_t>(4096, 100)).size(), 11U);
}

TEST(PackNumbers, AnyBytesAreReadOrRefused) {
    std::mt19937_64 random(8);
    std::vector<double> reals(6000);
    std::vector<std::uint32_t> counts(6000);
    for (double& real : reals) real = static_cast<double>(random() % 1000);
    const auto whole = pack(reals);
    for (int i = 0; i < 2000; ++i) {
        auto damaged = whole;
        for (int flips = 0; flips < 4; ++flips)
            damaged[random() % (flips < 3 ? 16 : damaged.size())] ^= static_cast<char>(1 << random() % 8);
        damaged.resize(random() % (damaged.size() + 1));
        const std::vector<char> exact(damaged);  // so that a read behind the end is one behind the block
        core::unpackNumbers(std::span<const char>(exact), std::span<double>(reals));
        core::unpackNumbers(std::span<const char>(exact), std::span<std::uint32_t>(counts));
    }
    std::vector<char> wider{57};
    wider.resize(100000);
    EXPECT_FALSE(core::unpackNumbers(std::span<const char>(wider), std::span<double>(reals)));
}

}  // namespace
}  // namespace nemra::test
