#include "engine/core/kernel/kernel_scene.h"

namespace nemra::core {

bool hasWide() noexcept {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi2");
}

bool hasWidest() noexcept {
    return hasWide() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
}

RenderBatch bestKernel() noexcept { return hasWidest() ? kernelWidest() : hasWide() ? kernelWide() : kernelBaseline(); }

}  // namespace nemra::core
