#include "engine/core/kernel/kernel_scene.h"

namespace nemra::core {

RenderBatch bestKernel() noexcept {
    __builtin_cpu_init();
    const bool wide = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi2");
    return wide ? kernelWide() : kernelBaseline();
}

}  // namespace nemra::core
