/// Whether a render that has no threads of its own still has somebody who works for it.
#pragma once

#include <chrono>
#include <mutex>

namespace nemra::core::worker {

/// Shared by the remote nodes of a render.
class Attendance {
public:
    using Clock = std::chrono::steady_clock;

    /// `nodes` remote nodes are trying to reach their workers.
    Attendance(int nodes, double patience) : patience_(patience), trying_(nodes), emptySince_(Clock::now()) {}

    /// While it lives, one worker is there.
    class Presence {
    public:
        explicit Presence(Attendance& attendance) : attendance_(attendance) { attendance_.count(1); }
        ~Presence() { attendance_.count(-1); }
        Presence(const Presence&) = delete;
        Presence& operator=(const Presence&) = delete;

    private:
        Attendance& attendance_;
    };

    /// A node won't try any more.
    void gaveUp() {
        const std::lock_guard lock(mutex_);
        --trying_;
    }
    /// Workers that are there.
    int present() const {
        const std::lock_guard lock(mutex_);
        return present_;
    }
    /// Nobody has been there for as long as the render has patience, or nobody will come.
    bool isHopeless() const {
        const std::lock_guard lock(mutex_);
        return trying_ == 0 || (present_ == 0 && Clock::now() - emptySince_ >= patience_);
    }

private:
    void count(int more) {
        const std::lock_guard lock(mutex_);
        present_ += more;
        if (present_ == 0) emptySince_ = Clock::now();
    }

    const std::chrono::duration<double> patience_;
    mutable std::mutex mutex_;
    int trying_;
    int present_ = 0;
    Clock::time_point emptySince_;
};

}  // namespace nemra::core::worker
