#include "engine/core/worker/wake.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace nemra::core::worker {

Wake::Wake() : descriptor_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "no descriptor to wake a thread with");
}

Wake::~Wake() { ::close(descriptor_); }

void Wake::wake() const noexcept {
    const std::uint64_t one = 1;
    // What can go wrong is that the counter is full, and then the thread is awake.
    [[maybe_unused]] const auto written = ::write(descriptor_, &one, sizeof one);
}

void Wake::clear() const noexcept {
    std::uint64_t count = 0;
    [[maybe_unused]] const auto taken = ::read(descriptor_, &count, sizeof count);
}

}  // namespace nemra::core::worker
