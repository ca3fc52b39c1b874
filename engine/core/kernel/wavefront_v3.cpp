// The kernels for x86-64-v3 processors (AVX2); the flags stand in CMakeLists.txt.
#define NEMRA_KERNEL kernel_v3
#include "engine/core/kernel/wavefront.h"

namespace nemra::core {

RenderBatch kernelWide() noexcept { return &kernel_v3::renderAny; }

}  // namespace nemra::core
