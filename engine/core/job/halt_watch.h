/// A halt condition while a render is under way.
#pragma once

#include <cstdint>

#include "engine/core/job/halt_condition.h"

namespace nemra::core {

/// A condition has its effect once, and counts no more until a new one is set. Not thread-safe.
class HaltWatch {
public:
    explicit HaltWatch(const HaltCondition& condition) : condition_(condition) {}

    void set(const HaltCondition& condition) noexcept {
        condition_ = condition;
        done_ = false;
        ++generation_;
    }
    const HaltCondition& condition() const noexcept { return condition_; }
    /// Conditions set so far; tells whether another one came meanwhile.
    std::uint64_t generation() const noexcept { return generation_; }

    void setDone() noexcept { done_ = true; }
    bool isDone() const noexcept { return done_; }

    /// Sample index at which work ends. A scene can't take more samples than their numbers reach, so there always is one.
    std::uint32_t sampleLimit() const noexcept { return done_ ? HaltCondition::kEndOfSamples : condition_.sampleLimit(); }
    bool waitsForTime() const noexcept { return !done_ && condition_.hasTime(); }
    double secondsLeft(double elapsed) const noexcept { return condition_.time - elapsed; }
    bool isTimeUp(double elapsed) const noexcept { return waitsForTime() && elapsed >= condition_.time; }

private:
    HaltCondition condition_;
    bool done_ = false;
    std::uint64_t generation_ = 0;
};

}  // namespace nemra::core
