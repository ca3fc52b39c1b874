#include "engine/core/job/render_clock.h"

namespace nemra::core {

namespace {

double seconds(RenderClock::Clock::duration span) { return std::chrono::duration<double>(span).count(); }

}  // namespace

void RenderClock::run(Clock::time_point now, std::uint64_t samples) noexcept {
    running_ = true;
    since_ = rateSince_ = now;
    rateSamples_ = samples;
    rate_.reset();
}

void RenderClock::rest(Clock::time_point now) noexcept {
    before_ = elapsed(now);
    running_ = false;
}

double RenderClock::elapsed(Clock::time_point now) const noexcept { return running_ ? before_ + seconds(now - since_) : before_; }

void RenderClock::tick(Clock::time_point now, std::uint64_t samples) noexcept {
    const double span = seconds(now - rateSince_);
    if (span > 0.0) rate_ = static_cast<double>(samples - rateSamples_) / span;
    rateSince_ = now;
    rateSamples_ = samples;
}

}  // namespace nemra::core
