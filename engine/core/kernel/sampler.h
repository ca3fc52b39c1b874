/// Sample points: Owen-scrambled Sobol' pairs, padded, indexed by (pixel, sample, set). Nothing else enters their value.
///
/// Each set of two dimensions is a (0, 2)-sequence whose order is shuffled and whose coordinates are scrambled by hashes that
/// keep the stratification (Burley, "Practical Hash-based Owen Scrambling", JCGT 9(4), 2020; Owen 1995). The hash of the nested
/// scrambling is that of Laine and Karras (2011) with the constants of Vegdahl (2021). Everything is done on reversed bits, where
/// the second Sobol' dimension is the change of variable x -> 1 + x of a polynomial over GF(2), five steps.
#pragma once

#include "engine/core/kernel/simd.h"

namespace nemra::core::NEMRA_KERNEL {

template <class U>
NEMRA_INLINE U reverseBits(U x) {
    x = ((x >> 1) & 0x55555555U) | ((x & 0x55555555U) << 1);
    x = ((x >> 2) & 0x33333333U) | ((x & 0x33333333U) << 2);
    x = ((x >> 4) & 0x0F0F0F0FU) | ((x & 0x0F0F0F0FU) << 4);
    x = ((x >> 8) & 0x00FF00FFU) | ((x & 0x00FF00FFU) << 8);
    return (x >> 16) | (x << 16);
}

/// Nested uniform scrambling of reversed bits: a bit is flipped by a hash of those below it.
template <class U>
NEMRA_INLINE U scramble(U x, U seed) {
    x ^= x * 0x3D20ADEAU;
    x += seed;
    x *= (seed >> 16) | 1U;
    x ^= x * 0x05526C56U;
    x ^= x * 0x53A22864U;
    return x;
}

/// Reversed bits of the second Sobol' coordinate of index i: i as a polynomial, at 1 + x.
template <class U>
NEMRA_INLINE U sobolSecond(U i) {
    i ^= i >> 16;
    i ^= (i & 0xFF00FF00U) >> 8;
    i ^= (i & 0xF0F0F0F0U) >> 4;
    i ^= (i & 0xCCCCCCCCU) >> 2;
    i ^= (i & 0xAAAAAAAAU) >> 1;
    return i;
}

/// A bijection that mixes all bits.
template <class U>
NEMRA_INLINE U mixBits(U x) {
    x ^= x >> 16;
    x *= 0x7FEB352DU;
    x ^= x >> 15;
    x *= 0x846CA68BU;
    x ^= x >> 16;
    return x;
}

/// What stands for a pixel in all its samples.
NEMRA_INLINE std::uint32_t pixelSeed(std::uint32_t x, std::uint32_t y, std::uint32_t seed) {
    return mixBits(x + mixBits(y + mixBits(seed ^ 0x51ED270BU)));
}

template <class U>
struct PairBits {
    U first, second;
};

/// Both coordinates as 32-bit fractions. `reversedIndex`: the sample's index with its bits reversed.
template <class U>
NEMRA_INLINE PairBits<U> samplePair(U reversedIndex, U pixel, U set) {
    const U h = mixBits(pixel ^ (set * 0x9E3779B9U));
    const U shuffled = reverseBits(scramble(reversedIndex, h));
    const U a = (h ^ (h >> 15)) * 0x85EBCA6BU;
    const U b = (h ^ (h >> 13)) * 0xC2B2AE35U;
    return {reverseBits(scramble(shuffled, a)), reverseBits(scramble(sobolSecond(shuffled), b))};
}

// Sets: what each is used for. A bounce takes three.
constexpr std::uint32_t kSetPixel = 0;
constexpr std::uint32_t kSetWavelength = 1;
constexpr std::uint32_t kSetLens = 2;
constexpr std::uint32_t kSetFirstBounce = 3;
constexpr std::uint32_t kSetsPerBounce = 3;
constexpr std::uint32_t kSetLight = 0;
constexpr std::uint32_t kSetScatter = 1;
constexpr std::uint32_t kSetChoices = 2;                ///< which light, Russian roulette
constexpr std::uint32_t kSetPartOfLight = 0x80000000U;  ///< added to a bounce's first: which triangle of an instanced light

}  // namespace nemra::core::NEMRA_KERNEL
