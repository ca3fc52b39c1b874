/// Messages that wait for their turn to be told, so that the end of the process can wait for them.
#pragma once

#include <utility>

namespace nemra::core {

/// Counts a message in for as long as it lives, wherever it is moved to.
class PendingMessage {
public:
    PendingMessage() noexcept;
    ~PendingMessage();
    PendingMessage(PendingMessage&& other) noexcept : counted_(std::exchange(other.counted_, false)) {}
    PendingMessage& operator=(PendingMessage&& other) noexcept {
        std::swap(counted_, other.counted_);
        return *this;
    }

private:
    bool counted_ = true;
};

/// Waits, at most that long, until no message is pending in this process. The caller holds neither a lock of ours nor the host's.
void waitForMessages(int timeoutMs);

}  // namespace nemra::core
