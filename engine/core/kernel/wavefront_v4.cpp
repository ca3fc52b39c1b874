// The kernels for x86-64-v4 processors (AVX-512); the flags stand in CMakeLists.txt.
#define NEMRA_KERNEL kernel_v4
#include "engine/core/kernel/wavefront.h"

namespace nemra::core {

RenderBatch kernelWidest() noexcept { return &kernel_v4::renderAny; }

}  // namespace nemra::core
