/// Work on the rows of a picture, shared among the machine's cores.
#pragma once

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>
#include <vector>

#include "engine/common/blocked_signals.h"

namespace nemra::core {

/// Calls work(row) for each row in [0, rows), from several threads, each for at least `least` rows. `work` must not throw, and
/// rows must not touch each other.
template <class Work>
void parallelRows(int rows, Work&& work, int least = 16) {
    const int threads = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, std::max(1, rows / least));
    std::atomic<int> next{0};
    const auto run = [&] {
        for (int row = next++; row < rows; row = next++) work(row);
    };
    std::vector<std::jthread> helpers;
    try {
        const BlockedSignals blocked;
        for (int i = 1; i < threads; ++i) helpers.emplace_back(run);
    } catch (const std::exception&) {
        // as many as the system gives
    }
    run();
}

}  // namespace nemra::core
