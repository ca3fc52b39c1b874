// The kernels for any x86-64-v2 processor; the flags stand in CMakeLists.txt.
#define NEMRA_KERNEL kernel_v2
#include "engine/core/kernel/wavefront.h"

namespace nemra::core {

RenderBatch kernelBaseline() noexcept { return &kernel_v2::renderAny; }

}  // namespace nemra::core
