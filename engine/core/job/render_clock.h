/// How long a render has been running, and how fast it goes.
#pragma once

#include <chrono>
#include <cstdint>

namespace nemra::core {

/// Pauses don't count. Not thread-safe.
class RenderClock {
public:
    using Clock = std::chrono::steady_clock;

    /// `samples` are those rendered so far.
    void run(Clock::time_point now, std::uint64_t samples) noexcept;
    void rest(Clock::time_point now) noexcept;
    double elapsed(Clock::time_point now) const noexcept;  ///< s

    /// Takes the rate of samples since the last tick or the last run.
    void tick(Clock::time_point now, std::uint64_t samples) noexcept;
    double currentRate() const noexcept { return rate_; }  ///< 1/s, 0 before the first tick

private:
    bool running_ = false;
    double before_ = 0.0;  ///< s, of spans that are over
    Clock::time_point since_;
    Clock::time_point rateSince_;
    std::uint64_t rateSamples_ = 0;
    double rate_ = 0.0;
};

}  // namespace nemra::core
