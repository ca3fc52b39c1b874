#include "engine/core/job/pending_message.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace nemra::core {

namespace {

constinit std::atomic<int> pending{0};

}  // namespace

PendingMessage::PendingMessage() noexcept { ++pending; }

PendingMessage::~PendingMessage() {
    if (counted_) --pending;
}

void waitForMessages(int timeoutMs) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (pending > 0 && std::chrono::steady_clock::now() < until) std::this_thread::sleep_for(std::chrono::microseconds(200));
}

}  // namespace nemra::core
