/// How long a render has been running, and how fast it goes.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace nemra::core {

/// Pauses don't count. Not thread-safe.
class RenderClock {
public:
    using Clock = std::chrono::steady_clock;

    /// `before`: s, of an earlier render that is gone on with.
    explicit RenderClock(double before = 0.0) : before_(before) {}

    /// `samples` are those rendered so far.
    void run(Clock::time_point now, std::uint64_t samples) noexcept;
    void rest(Clock::time_point now) noexcept;
    double elapsed(Clock::time_point now) const noexcept;  ///< s

    /// Takes the rate of samples since the last tick or the last run.
    void tick(Clock::time_point now, std::uint64_t samples) noexcept;
    /// 1/s, 0 at rest; `average` before the first tick, as the best there is.
    double currentRate(double average) const noexcept { return running_ ? rate_.value_or(average) : 0.0; }

private:
    bool running_ = false;
    double before_ = 0.0;  ///< s, of spans that are over
    Clock::time_point since_;
    Clock::time_point rateSince_;
    std::uint64_t rateSamples_ = 0;
    std::optional<double> rate_;
};

}  // namespace nemra::core
