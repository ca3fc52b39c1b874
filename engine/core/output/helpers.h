/// Work that others take off the hands of a thread that has a stream to read.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "engine/common/blocked_signals.h"

namespace nemra::core {

/// Threads that call use(piece) for pieces that one thread gives, in any order and several at the same time. What `use` throws is
/// thrown on by finish(), or by give() where the giver uses the piece itself. It must not call the host, which may be waiting for
/// the giver.
template <class Piece, class Use>
class Helpers {
public:
    /// At most `threads`, and as many as the machine has cores beside the giver's; 0: the giver does all itself.
    Helpers(Use use, std::size_t threads) : use_(std::move(use)) {
        const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
        try {
            const BlockedSignals blocked;
            for (std::size_t i = 0; i < std::min(threads, cores - 1); ++i) threads_.emplace_back([this] { run(); });
        } catch (const std::exception&) {
            // as many as the system gives
        }
    }
    /// What wasn't taken yet is dropped.
    ~Helpers() { end(true); }
    Helpers(const Helpers&) = delete;
    Helpers& operator=(const Helpers&) = delete;

    /// Uses a piece itself when the others have enough to do, so that memory stays bounded. May throw std::bad_alloc.
    void give(Piece piece) {
        {
            const std::lock_guard lock(mutex_);
            if (waiting_.size() < 2 * threads_.size()) {
                waiting_.push_back(std::move(piece));
                changed_.notify_one();
                return;
            }
        }
        use_(piece);
    }
    /// Returns when all that was given is used.
    void finish() {
        run(false);
        end(false);
        if (fault_) std::rethrow_exception(fault_);
    }

private:
    void run(bool waits = true) {
        std::unique_lock lock(mutex_);
        while (true) {
            if (waits) changed_.wait(lock, [this] { return ended_ || !waiting_.empty(); });
            if (waiting_.empty()) return;
            const Piece piece = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            std::exception_ptr fault;
            try {
                use_(piece);
            } catch (...) {
                fault = std::current_exception();
            }
            lock.lock();
            if (!fault_) fault_ = fault;
        }
    }
    void end(bool dropped) {
        {
            const std::lock_guard lock(mutex_);
            if (dropped) waiting_.clear();
            ended_ = true;
            changed_.notify_all();
        }
        threads_.clear();  // joins them
    }

    const Use use_;
    std::mutex mutex_;  // for the next three
    std::deque<Piece> waiting_;
    std::exception_ptr fault_;
    bool ended_ = false;
    std::condition_variable changed_;
    std::vector<std::jthread> threads_;
};

}  // namespace nemra::core
