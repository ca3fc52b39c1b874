/// What a piece of work takes.
#pragma once

#include <time.h>

namespace nemra::core {

/// s of the processor that this thread has had: waiting for a tile that is being rendered takes nothing from the render.
inline double threadTime() noexcept {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1.0e-9 * static_cast<double>(time.tv_nsec);
}

}  // namespace nemra::core
