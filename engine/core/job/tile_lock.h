/// The lock of a part of a film.
#pragma once

#include <atomic>
#include <mutex>

namespace nemra::core {

/// Whoever renders takes the lock again and again, and hardly ever leaves it for long enough that another thread wakes up in
/// time. So one that wants it for once goes first.
class TileLock {
public:
    void lock() {
        for (int waiting = waiting_; waiting > 0; waiting = waiting_) waiting_.wait(waiting);
        mutex_.lock();
    }
    void unlock() { mutex_.unlock(); }

    /// Held for a moment, ahead of those who render.
    class First {
    public:
        explicit First(TileLock& lock) : lock_(lock) {
            ++lock_.waiting_;
            lock_.mutex_.lock();
            --lock_.waiting_;
            lock_.waiting_.notify_all();
        }
        ~First() { lock_.mutex_.unlock(); }
        First(const First&) = delete;
        First& operator=(const First&) = delete;

    private:
        TileLock& lock_;
    };

private:
    std::mutex mutex_;
    std::atomic<int> waiting_{0};
};

}  // namespace nemra::core
