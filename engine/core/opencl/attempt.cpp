#include "engine/core/opencl/attempt.h"

#include <utility>

#include "engine/common/log.h"

namespace nemra::core::opencl {

void Attempt::giveUp(const Failure& failure) {
    if (!failure.isKnown()) {
        log::warning(who_, "OpenCL on " + device_->name() + ": " + failure.what() + "; the processor does the work instead");
    }
    device_ = nullptr;
}

void Attempt::tellOnce() {
    if (!std::exchange(isTold_, true)) log::debug(who_, "done by OpenCL on " + device_->name());
}

}  // namespace nemra::core::opencl
