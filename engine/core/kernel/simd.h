/// Lanes of numbers in plain GCC vector types, as many as a register of the instruction set holds. Included by kernel sources,
/// which are compiled once per instruction set: everything here lives in that set's own namespace, so that no function built for
/// one processor is linked into another's code.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#ifndef NEMRA_KERNEL
#define NEMRA_KERNEL kernel_baseline
#endif
#define NEMRA_INLINE static inline __attribute__((always_inline))

namespace nemra::core::NEMRA_KERNEL {

#if defined(__AVX512F__) && defined(__AVX512DQ__) && defined(__AVX512VL__)
constexpr int kLanes = 16;
#elif defined(__AVX2__)
constexpr int kLanes = 8;
#else
constexpr int kLanes = 4;
#endif
constexpr int kAllLanes = (1 << kLanes) - 1;

typedef float F4 __attribute__((vector_size(16)));
typedef std::int32_t I4 __attribute__((vector_size(16)));
typedef std::uint32_t U4 __attribute__((vector_size(16)));
typedef float FloatN __attribute__((vector_size(4 * kLanes)));
typedef std::int32_t IntN __attribute__((vector_size(4 * kLanes)));
typedef std::uint32_t BitsN __attribute__((vector_size(4 * kLanes)));
typedef double D4 __attribute__((vector_size(32)));

// x - 0 is x for every x, so that only a broadcast is left of it.
NEMRA_INLINE FloatN splat(float x) { return x - FloatN{}; }
NEMRA_INLINE IntN splatInt(std::int32_t x) { return x + IntN{}; }
NEMRA_INLINE BitsN splatBits(std::uint32_t x) { return x + BitsN{}; }

NEMRA_INLINE FloatN load(const float* p) {
    FloatN r;
    std::memcpy(&r, p, sizeof r);
    return r;
}
NEMRA_INLINE IntN load(const std::int32_t* p) {
    IntN r;
    std::memcpy(&r, p, sizeof r);
    return r;
}
NEMRA_INLINE BitsN load(const std::uint32_t* p) {
    BitsN r;
    std::memcpy(&r, p, sizeof r);
    return r;
}
template <class T, class V>
NEMRA_INLINE void store(T* p, V v) {
    std::memcpy(p, &v, sizeof v);
}
NEMRA_INLINE F4 load4(const float* p) {
    F4 r;
    std::memcpy(&r, p, sizeof r);
    return r;
}
NEMRA_INLINE F4 splat4(float x) { return F4{x, x, x, x}; }
NEMRA_INLINE float largest(F4 v) {
    const float a = v[0] > v[1] ? v[0] : v[1];
    const float b = v[2] > v[3] ? v[2] : v[3];
    return a > b ? a : b;
}
/// Sum of the first three components' products.
NEMRA_INLINE float dot3(F4 a, F4 b) {
    const F4 p = a * b;
    return p[0] + p[1] + p[2];
}

/// mask ? a : b, mask from a comparison.
NEMRA_INLINE FloatN select(IntN mask, FloatN a, FloatN b) {
#if defined(__AVX512F__)
    return mask ? a : b;
#elif defined(__AVX2__)
    return (FloatN)_mm256_blendv_ps((__m256)b, (__m256)a, (__m256)mask);
#else
    return (FloatN)_mm_blendv_ps((__m128)b, (__m128)a, (__m128)mask);
#endif
}
NEMRA_INLINE IntN select(IntN mask, IntN a, IntN b) { return (IntN)select(mask, (FloatN)a, (FloatN)b); }

// smaller and larger: if one is no number, the result is the second, on every processor.
#if defined(__AVX512F__)
NEMRA_INLINE FloatN squareRoot(FloatN x) { return (FloatN)_mm512_sqrt_ps((__m512)x); }
NEMRA_INLINE FloatN smaller(FloatN a, FloatN b) { return (FloatN)_mm512_min_ps((__m512)a, (__m512)b); }
NEMRA_INLINE FloatN larger(FloatN a, FloatN b) { return (FloatN)_mm512_max_ps((__m512)a, (__m512)b); }
NEMRA_INLINE int laneBits(IntN mask) { return _mm512_movepi32_mask((__m512i)mask); }
#elif defined(__AVX2__)
NEMRA_INLINE FloatN squareRoot(FloatN x) { return (FloatN)_mm256_sqrt_ps((__m256)x); }
NEMRA_INLINE FloatN smaller(FloatN a, FloatN b) { return (FloatN)_mm256_min_ps((__m256)a, (__m256)b); }
NEMRA_INLINE FloatN larger(FloatN a, FloatN b) { return (FloatN)_mm256_max_ps((__m256)a, (__m256)b); }
NEMRA_INLINE int laneBits(IntN mask) { return _mm256_movemask_ps((__m256)mask); }
#else
NEMRA_INLINE FloatN squareRoot(FloatN x) { return (FloatN)_mm_sqrt_ps((__m128)x); }
NEMRA_INLINE FloatN smaller(FloatN a, FloatN b) { return (FloatN)_mm_min_ps((__m128)a, (__m128)b); }
NEMRA_INLINE FloatN larger(FloatN a, FloatN b) { return (FloatN)_mm_max_ps((__m128)a, (__m128)b); }
NEMRA_INLINE int laneBits(IntN mask) { return _mm_movemask_ps((__m128)mask); }
#endif

NEMRA_INLINE FloatN magnitude(FloatN x) { return (FloatN)((IntN)x & 0x7FFFFFFF); }
/// a with the sign flipped where s is negative.
NEMRA_INLINE FloatN flipSign(FloatN a, FloatN s) { return (FloatN)((IntN)a ^ ((IntN)s & (std::int32_t)0x80000000)); }
NEMRA_INLINE IntN truncated(FloatN x) { return __builtin_convertvector(x, IntN); }
NEMRA_INLINE FloatN toFloat(IntN x) { return __builtin_convertvector(x, FloatN); }
/// The upper 24 bits as a number in [0, 1).
NEMRA_INLINE FloatN toUnit(BitsN x) { return __builtin_convertvector((IntN)(x >> 8), FloatN) * 0x1p-24F; }

struct VecN {
    FloatN x, y, z;
};
NEMRA_INLINE VecN operator+(VecN a, VecN b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
NEMRA_INLINE VecN operator-(VecN a, VecN b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
NEMRA_INLINE VecN operator*(VecN a, FloatN s) { return {a.x * s, a.y * s, a.z * s}; }
NEMRA_INLINE FloatN dot(VecN a, VecN b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
NEMRA_INLINE VecN splat(const float* v) { return {splat(v[0]), splat(v[1]), splat(v[2])}; }

}  // namespace nemra::core::NEMRA_KERNEL
