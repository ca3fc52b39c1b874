/// Eight lanes of numbers in plain GCC vector types. Included by kernel sources, which are compiled once per instruction set:
/// everything here lives in that set's own namespace, so that no function built for one processor is linked into another's code.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#ifndef NEMRA_KERNEL
#define NEMRA_KERNEL kernel_baseline
#endif
#define NEMRA_INLINE static inline __attribute__((always_inline))

namespace nemra::core::NEMRA_KERNEL {

constexpr int kLanes = 8;

typedef float F4 __attribute__((vector_size(16)));
typedef std::int32_t I4 __attribute__((vector_size(16)));
typedef std::uint32_t U4 __attribute__((vector_size(16)));
typedef float F8 __attribute__((vector_size(32)));
typedef std::int32_t I8 __attribute__((vector_size(32)));
typedef std::uint32_t U8 __attribute__((vector_size(32)));
typedef double D4 __attribute__((vector_size(32)));

NEMRA_INLINE F8 splat(float x) { return F8{x, x, x, x, x, x, x, x}; }
NEMRA_INLINE I8 splatInt(std::int32_t x) { return I8{x, x, x, x, x, x, x, x}; }
NEMRA_INLINE U8 splatBits(std::uint32_t x) { return U8{x, x, x, x, x, x, x, x}; }

NEMRA_INLINE F8 load(const float* p) {
    F8 r;
    std::memcpy(&r, p, sizeof r);
    return r;
}
NEMRA_INLINE I8 load(const std::int32_t* p) {
    I8 r;
    std::memcpy(&r, p, sizeof r);
    return r;
}
NEMRA_INLINE U8 load(const std::uint32_t* p) {
    U8 r;
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
NEMRA_INLINE F8 select(I8 mask, F8 a, F8 b) {
#ifdef __AVX__
    return (F8)_mm256_blendv_ps((__m256)b, (__m256)a, (__m256)mask);
#else
    return (F8)((mask & (I8)a) | (~mask & (I8)b));
#endif
}
NEMRA_INLINE I8 select(I8 mask, I8 a, I8 b) { return (I8)select(mask, (F8)a, (F8)b); }

#ifdef __AVX__
NEMRA_INLINE F8 squareRoot(F8 x) { return (F8)_mm256_sqrt_ps((__m256)x); }
NEMRA_INLINE F8 smaller(F8 a, F8 b) { return (F8)_mm256_min_ps((__m256)a, (__m256)b); }
NEMRA_INLINE F8 larger(F8 a, F8 b) { return (F8)_mm256_max_ps((__m256)a, (__m256)b); }
NEMRA_INLINE int laneBits(I8 mask) { return _mm256_movemask_ps((__m256)mask); }
#else
struct Halves {
    __m128 low, high;
};
NEMRA_INLINE Halves halves(F8 x) {
    Halves h;
    std::memcpy(&h, &x, sizeof h);
    return h;
}
NEMRA_INLINE F8 whole(__m128 low, __m128 high) {
    const Halves h{low, high};
    F8 x;
    std::memcpy(&x, &h, sizeof x);
    return x;
}
NEMRA_INLINE F8 squareRoot(F8 x) {
    const Halves h = halves(x);
    return whole(_mm_sqrt_ps(h.low), _mm_sqrt_ps(h.high));
}
NEMRA_INLINE F8 smaller(F8 a, F8 b) {
    const Halves x = halves(a), y = halves(b);
    return whole(_mm_min_ps(x.low, y.low), _mm_min_ps(x.high, y.high));
}
NEMRA_INLINE F8 larger(F8 a, F8 b) {
    const Halves x = halves(a), y = halves(b);
    return whole(_mm_max_ps(x.low, y.low), _mm_max_ps(x.high, y.high));
}
NEMRA_INLINE int laneBits(I8 mask) {
    const Halves h = halves((F8)mask);
    return _mm_movemask_ps(h.low) | _mm_movemask_ps(h.high) << 4;
}
#endif

NEMRA_INLINE F8 magnitude(F8 x) { return (F8)((I8)x & 0x7FFFFFFF); }
/// a with the sign flipped where s is negative.
NEMRA_INLINE F8 flipSign(F8 a, F8 s) { return (F8)((I8)a ^ ((I8)s & (std::int32_t)0x80000000)); }
NEMRA_INLINE I8 truncated(F8 x) { return __builtin_convertvector(x, I8); }
NEMRA_INLINE F8 toFloat(I8 x) { return __builtin_convertvector(x, F8); }
/// The upper 24 bits as a number in [0, 1).
NEMRA_INLINE F8 toUnit(U8 x) { return __builtin_convertvector((I8)(x >> 8), F8) * 0x1p-24F; }

struct Vec8 {
    F8 x, y, z;
};
NEMRA_INLINE Vec8 operator+(Vec8 a, Vec8 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
NEMRA_INLINE Vec8 operator-(Vec8 a, Vec8 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
NEMRA_INLINE Vec8 operator*(Vec8 a, F8 s) { return {a.x * s, a.y * s, a.z * s}; }
NEMRA_INLINE F8 dot(Vec8 a, Vec8 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
NEMRA_INLINE Vec8 splat(const float* v) { return {splat(v[0]), splat(v[1]), splat(v[2])}; }

}  // namespace nemra::core::NEMRA_KERNEL
