/// Looking up spectra at a path's wavelengths, four at a time.
#pragma once

#include "engine/core/kernel/kernel_scene.h"
#include "engine/core/kernel/simd.h"

namespace nemra::core::NEMRA_KERNEL {

/// Lines of four cells at their positions: value + rise * position.
NEMRA_INLINE F4 lookUp(const SpectralCell* table, const std::int32_t* cells, F4 position) {
    const __m128 zero = _mm_setzero_ps();
    const __m128 a = _mm_loadh_pi(_mm_loadl_pi(zero, (const __m64*)(table + cells[0])), (const __m64*)(table + cells[1]));
    const __m128 b = _mm_loadh_pi(_mm_loadl_pi(zero, (const __m64*)(table + cells[2])), (const __m64*)(table + cells[3]));
    const F4 value = (F4)_mm_shuffle_ps(a, b, 0x88);
    const F4 rise = (F4)_mm_shuffle_ps(a, b, 0xDD);
    return value + rise * position;
}

/// The wavelengths of a path: equal steps around the circle of random numbers, from where `bits` stands.
template <int W>
NEMRA_INLINE void drawWavelengths(const KernelScene& scene, std::uint32_t bits, std::int32_t* cell, float* inCell,
                                  float* weight) {
    const float steps = static_cast<float>(scene.lambdaStepCount);
    const float scale = steps * scene.cellWidth * (1.0F / W);
    for (int k = 0; k < W; k += 4) {
        constexpr std::uint32_t kApart = 0x80000000U / (W / 2);
        const std::uint32_t first = bits + kApart * k;
        const U4 u = U4{first, first + kApart, first + 2 * kApart, first + 3 * kApart};
        const F4 s = __builtin_convertvector((I4)(u >> 8), F4) * (0x1p-24F * steps);
        const I4 step = __builtin_convertvector(s, I4);
        F4 position = s - __builtin_convertvector(step, F4);
        const SpectralCell* table = scene.lambdaSteps;
        F4 size = splat4(scale);
        F4 start = {table[step[0]].value, table[step[1]].value, table[step[2]].value, table[step[3]].value};
        F4 rise = {table[step[0]].rise, table[step[1]].rise, table[step[2]].rise, table[step[3]].rise};
        if (__builtin_expect(_mm_movemask_ps((__m128)rise), 0)) {
            for (int i = 0; i < 4; ++i) {
                if (!(rise[i] < 0.0F)) continue;
                const float inside = position[i] * kSubSteps;
                const int part = static_cast<int>(inside);
                const SpectralCell& cut = table[static_cast<int>(start[i]) + part];
                start[i] = cut.value;
                position[i] = inside - static_cast<float>(part);
                rise[i] = cut.rise;
                size[i] = scale * kSubSteps;
            }
        }
        const F4 place = start + rise * position;
        I4 at = __builtin_convertvector(place, I4);
        for (int i = 0; i < 4; ++i) at[i] = at[i] < scene.cells ? at[i] : scene.cells - 1;
        store(cell + k, at);
        store(inCell + k, place - __builtin_convertvector(at, F4));
        store(weight + k, rise * size);
    }
}

}  // namespace nemra::core::NEMRA_KERNEL
