/// A filter's try to work on the chosen device.
#pragma once

#include <string>
#include <string_view>

#include "engine/core/opencl/device.h"

namespace nemra::core::opencl {

/// One run of a filter. `who` speaks in messages.
class Attempt {
public:
    explicit Attempt(std::string_view who) : who_(who), device_(chosenDevice()) {}

    /// True if work(device) was done. False if the processor must do it: there is no device, or it failed now or before, which a
    /// warning says once; success is a message for debugging. `work` must leave things outside as they are until nothing can fail
    /// any more.
    template <class Work>
    bool operator()(Work&& work) {
        if (!device_) return false;
        try {
            work(*device_);
            tellOnce();
            return true;
        } catch (const Failure& failure) {
            giveUp(failure);
            return false;
        }
    }

private:
    void giveUp(const Failure& failure);
    void tellOnce();

    std::string who_;
    Device* device_;
    bool isTold_ = false;
};

}  // namespace nemra::core::opencl
