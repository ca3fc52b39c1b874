/// Work on the rows of a picture, shared among the machine's cores.
#pragma once

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace nemra::core {

/// Calls work(row) for each row in [0, rows), from several threads. `work` must not throw, and rows must not touch each other.
/// A thread is worth its start from `perThread` rows on.
template <class Work>
void parallelRows(int rows, Work&& work, int perThread = 16) {
    const int threads = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, std::max(1, rows / perThread));
    std::atomic<int> next{0};
    const auto run = [&] {
        for (int row = next++; row < rows; row = next++) work(row);
    };
    std::vector<std::jthread> helpers;
    try {
        for (int i = 1; i < threads; ++i) helpers.emplace_back(run);
    } catch (const std::exception&) {
        // as many as the system gives
    }
    run();
}

}  // namespace nemra::core
