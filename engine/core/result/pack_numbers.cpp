#include "engine/core/result/pack_numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>

#include "engine/common/byte_reader.h"

namespace nemra::core {

namespace {

constexpr std::size_t kGroup = 4096;
constexpr std::size_t kGroupHead = 1 + 2 + 8;
constexpr unsigned kAsTheyAre = 64;
constexpr unsigned kMostBits = 56;  // with up to 7 bits before them these come with one load of 8 bytes
constexpr int kLargestExponent = 900;

/// How the numbers of a group are counted.
struct Scale {
    unsigned bits = kAsTheyAre;
    int exponent = 0;
    std::int64_t least = 0;
};

template <std::floating_point Real>
Scale scaleOf(std::span<const Real> numbers) noexcept {
    constexpr std::uint64_t mantissa = (std::uint64_t{1} << 52) - 1;
    int lowest = std::numeric_limits<int>::max();  // exponent of the lowest bit that is set in any number, plus 1075
    double least = std::numeric_limits<double>::infinity();
    double most = -least;
    for (const Real real : numbers) {
        const auto number = static_cast<double>(real);
        const auto bits = std::bit_cast<std::uint64_t>(number);
        least = std::min(least, number);
        most = std::max(most, number);
        if (bits == 0) continue;
        const int exponent = static_cast<int>(bits >> 52 & 0x7ff);
        if (exponent == 0 || exponent == 0x7ff) return {};
        lowest = std::min(lowest, exponent + std::countr_zero((bits & mantissa) | (mantissa + 1)));
    }
    Scale scale;
    if (lowest == std::numeric_limits<int>::max()) {
        scale.bits = 0;  // nothing but zeros
        return scale;
    }
    scale.exponent = lowest - 1075;
    if (std::abs(scale.exponent) > kLargestExponent) return {};
    const double perQuantum = std::ldexp(1.0, -scale.exponent);
    constexpr double limit = 0x1p62;
    if (!(std::max(std::abs(least), std::abs(most)) * perQuantum < limit)) return {};
    scale.least = static_cast<std::int64_t>(least * perQuantum);
    const auto range = static_cast<std::uint64_t>(static_cast<std::int64_t>(most * perQuantum) - scale.least);
    const auto bits = static_cast<unsigned>(std::bit_width(range));
    if (bits > kMostBits || bits >= 8 * sizeof(Real)) return {};
    scale.bits = bits;
    return scale;
}

template <std::integral Integer>
Scale scaleOf(std::span<const Integer> numbers) noexcept {
    const auto [least, most] = std::minmax_element(numbers.begin(), numbers.end());
    const auto bits = static_cast<unsigned>(std::bit_width(static_cast<std::uint64_t>(*most - *least)));
    if (bits > kMostBits) return {};
    return {bits, 0, static_cast<std::int64_t>(*least)};
}

/// The differences, one behind the other. Returns the end.
template <class Count>
char* putBits(std::size_t count, unsigned bits, char* out, Count&& countOf) noexcept {
    if (bits == 0) return out;
    std::uint64_t word = 0;
    unsigned filled = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t number = countOf(i);
        word |= number << filled;
        filled += bits;
        if (filled >= 64) {
            std::memcpy(out, &word, sizeof word);
            out += sizeof word;
            filled -= 64;
            word = filled > 0 ? number >> (bits - filled) : 0;
        }
    }
    const std::size_t rest = (filled + 7) / 8;
    std::memcpy(out, &word, rest);
    return out + rest;
}

/// Calls take(i, difference) for all. `bytes` are just those that putBits made.
template <class Take>
void getBits(std::span<const char> bytes, std::size_t count, unsigned bits, Take&& take) noexcept {
    const std::uint64_t mask = (std::uint64_t{1} << bits) - 1;
    std::size_t i = 0;
    if (bits == 0) {
        for (; i < count; ++i) take(i, 0);
        return;
    }
    std::size_t place = 0;  // in bits
    for (; i < count && place / 8 + sizeof(std::uint64_t) <= bytes.size(); ++i, place += bits) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + place / 8, sizeof word);
        take(i, word >> place % 8 & mask);
    }
    for (; i < count; ++i, place += bits) {
        std::uint64_t word = 0;
        const std::size_t from = std::min(place / 8, bytes.size());
        std::memcpy(&word, bytes.data() + from, std::min(sizeof word, bytes.size() - from));
        take(i, word >> place % 8 & mask);
    }
}

char* putHead(const Scale& scale, char* out) noexcept {
    const auto bits = static_cast<std::uint8_t>(scale.bits);
    const auto exponent = static_cast<std::int16_t>(scale.exponent);
    std::memcpy(out, &bits, 1);
    std::memcpy(out + 1, &exponent, 2);
    std::memcpy(out + 3, &scale.least, 8);
    return out + kGroupHead;
}

template <class Number>
char* packGroup(std::span<const Number> numbers, char* out) noexcept {
    const Scale scale = scaleOf(numbers);
    out = putHead(scale, out);
    if (scale.bits == kAsTheyAre) {
        std::memcpy(out, numbers.data(), numbers.size_bytes());
        return out + numbers.size_bytes();
    }
    if constexpr (std::floating_point<Number>) {
        const double perQuantum = std::ldexp(1.0, -scale.exponent);
        return putBits(numbers.size(), scale.bits, out, [&](std::size_t i) {
            return static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<double>(numbers[i]) * perQuantum) -
                                              scale.least);
        });
    } else {
        const auto least = static_cast<std::uint64_t>(scale.least);
        return putBits(numbers.size(), scale.bits, out, [&](std::size_t i) { return numbers[i] - least; });
    }
}

template <class Number>
bool unpackGroup(ByteReader& packed, std::span<Number> numbers) noexcept {
    const unsigned bits = packed.value<std::uint8_t>();
    const int exponent = packed.value<std::int16_t>();
    const auto least = packed.value<std::int64_t>();
    if (bits == kAsTheyAre) {
        const auto bytes = packed.take(numbers.size_bytes());
        if (packed.ok()) std::memcpy(numbers.data(), bytes.data(), bytes.size());
        return packed.ok();
    }
    if (bits > kMostBits) return false;
    const auto bytes = packed.take((numbers.size() * bits + 7) / 8);
    if (!packed.ok()) return false;
    if constexpr (std::floating_point<Number>) {
        constexpr std::int64_t limit = std::int64_t{1} << 62;
        if (std::abs(exponent) > kLargestExponent || least <= -limit || least >= limit) return false;
        const double quantum = std::ldexp(1.0, exponent);
        getBits(bytes, numbers.size(), bits, [&](std::size_t i, std::uint64_t n) {
            numbers[i] = static_cast<Number>(static_cast<double>(least + static_cast<std::int64_t>(n)) * quantum);
        });
    } else {
        getBits(bytes, numbers.size(), bits,
                [&](std::size_t i, std::uint64_t n) { numbers[i] = static_cast<Number>(static_cast<std::uint64_t>(least) + n); });
    }
    return true;
}

}  // namespace

template <class Number>
void packNumbers(std::span<const Number> numbers, std::vector<char>& packed) {
    const std::size_t groups = (numbers.size() + kGroup - 1) / kGroup;
    const std::size_t start = packed.size();
    packed.resize(start + groups * kGroupHead + numbers.size_bytes());
    char* out = packed.data() + start;
    for (std::size_t first = 0; first < numbers.size(); first += kGroup) {
        out = packGroup(numbers.subspan(first, std::min(kGroup, numbers.size() - first)), out);
    }
    packed.resize(static_cast<std::size_t>(out - packed.data()));
}

template <class Number>
bool unpackNumbers(std::span<const char> packed, std::span<Number> numbers) noexcept {
    ByteReader reader(packed);
    for (std::size_t first = 0; first < numbers.size(); first += kGroup) {
        if (!unpackGroup(reader, numbers.subspan(first, std::min(kGroup, numbers.size() - first)))) return false;
    }
    return true;
}

template void packNumbers(std::span<const double>, std::vector<char>&);
template void packNumbers(std::span<const float>, std::vector<char>&);
template void packNumbers(std::span<const std::uint8_t>, std::vector<char>&);
template void packNumbers(std::span<const std::uint32_t>, std::vector<char>&);
template void packNumbers(std::span<const std::uint64_t>, std::vector<char>&);
template bool unpackNumbers(std::span<const char>, std::span<double>) noexcept;
template bool unpackNumbers(std::span<const char>, std::span<float>) noexcept;
template bool unpackNumbers(std::span<const char>, std::span<std::uint8_t>) noexcept;
template bool unpackNumbers(std::span<const char>, std::span<std::uint32_t>) noexcept;
template bool unpackNumbers(std::span<const char>, std::span<std::uint64_t>) noexcept;

}  // namespace nemra::core
