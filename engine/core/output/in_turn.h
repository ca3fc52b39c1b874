/// Pieces that are made at the same time and handed on in their order.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "engine/common/blocked_signals.h"

namespace nemra::core {

/// Calls make(i, piece) for each i in [0, count), on all cores, then give(piece) for each in the order of i, one at a time and on
/// whichever thread made it; the others go on making theirs meanwhile. `piece` is a std::vector<char>, empty for `make`. Once
/// `give` answers false no more is given. What `make` or `give` throws ends it too, and is thrown on here. Neither may call the
/// host, which may be waiting for this call.
template <class Make, class Give>
void inTurn(std::size_t count, Make&& make, Give&& give) {
    std::atomic<std::size_t> next{0};
    std::mutex mutex;  // for what follows
    std::condition_variable changed;
    std::size_t turn = 0;
    bool ended = false;
    std::exception_ptr fault;
    const auto end = [&](std::exception_ptr why) {
        const std::lock_guard lock(mutex);
        if (!fault) fault = std::move(why);
        ended = true;
        changed.notify_all();
    };
    const auto run = [&] {
        try {
            std::vector<char> piece;
            for (std::size_t i = next++; i < count; i = next++) {
                piece.clear();
                make(i, piece);
                std::unique_lock lock(mutex);
                changed.wait(lock, [&] { return ended || turn == i; });
                if (ended) return;
                lock.unlock();
                const bool goOn = give(piece);  // nobody else has the turn
                lock.lock();
                ++turn;
                ended = ended || !goOn;
                changed.notify_all();
            }
        } catch (...) {
            end(std::current_exception());
        }
    };
    {
        const std::size_t threads = std::min<std::size_t>(std::max(1U, std::thread::hardware_concurrency()), count);
        std::vector<std::jthread> helpers;
        try {
            const BlockedSignals blocked;
            for (std::size_t i = 1; i < threads; ++i) helpers.emplace_back(run);
        } catch (const std::exception&) {
            // as many as the system gives
        }
        run();
    }
    if (fault) std::rethrow_exception(fault);
}

}  // namespace nemra::core
