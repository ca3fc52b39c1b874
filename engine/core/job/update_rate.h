/// How often a render shows what it has.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <utility>

namespace nemra::core {

/// Updates come in growing intervals, and so rarely that copying the film takes no more than a share of the processor's time that
/// the render threads have had: with a large picture, few threads or a busy machine they come later. The first one comes in any
/// case, and isn't counted: whoever starts a render wants to see that it is the right one. Not thread-safe.
class UpdateRate {
public:
    using Clock = std::chrono::steady_clock;

    /// Less than the 1 % that updates may cost, since render threads also lose a little by the
    /// locks and caches that they share with whoever copies, and the copy is given back by another thread.
    static constexpr double kShare = 0.006;
    static constexpr double kFirstSeconds = 1.0;
    static constexpr double kGrowth = 1.25;
    static constexpr double kLongestSeconds = 10.0;

    /// `bytes` that a copy has, as long as nothing is known of what it takes.
    UpdateRate(int threads, std::size_t bytes)
        : threads_(std::max(1, threads)), expected_(kSecondsPerByte * static_cast<double>(bytes)) {}

    void begin(Clock::time_point now) noexcept { next_ = now + ticks(interval_); }
    /// When to ask again.
    Clock::time_point next() const noexcept { return next_; }
    /// Whether an update is to be made now. `rendered` are s of the processor that the render threads have had.
    bool isDue(Clock::time_point now, double rendered) noexcept {
        if (now < next_) return false;
        const double affordable = isFirst_ ? 0.0 : (spent_ + expected_) / kShare;
        if (rendered < affordable) {
            next_ = now + ticks(std::min((affordable - rendered) / threads_, kLongestWait));
            return false;
        }
        interval_ = std::min(interval_ * kGrowth, kLongestSeconds);
        next_ = now + ticks(interval_);
        return true;
    }
    /// s of the processor that an update has cost, due or asked for.
    void add(double seconds) noexcept {
        if (!std::exchange(isFirst_, false)) spent_ += seconds;
        expected_ = std::max(seconds, 0.5 * (expected_ + seconds));  // one that was cheap by chance promises little
    }

private:
    static constexpr double kSecondsPerByte = 1.0e-9;  // careful; half of it goes to fresh pages. The first copy tells better
    static constexpr double kLongestWait = 1.0e6;
    static Clock::duration ticks(double seconds) {
        return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    }

    double threads_;
    double expected_;  ///< s of the processor for the next one
    double spent_ = 0.0;
    bool isFirst_ = true;
    double interval_ = kFirstSeconds;
    Clock::time_point next_;
};

}  // namespace nemra::core
