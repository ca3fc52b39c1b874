/// A large content that comes in parts.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/common/buffer.h"

namespace nemra::core::worker {

/// Memory grows with what has come and not with what was announced.
class Incoming {
public:
    explicit Incoming(std::uint64_t size) : size_(size) {}

    std::uint64_t received() const noexcept { return bytes_.size(); }
    bool isWhole() const noexcept { return bytes_.size() == size_; }
    /// False, and nothing is taken, if the part isn't the next one.
    bool add(std::uint64_t offset, std::span<const char> part) {
        if (offset != bytes_.size() || part.empty() || part.size() > size_ - bytes_.size()) return false;
        bytes_.append({part.data(), part.size()});
        return true;
    }
    const Buffer& bytes() const noexcept { return bytes_; }
    Buffer take() && { return std::move(bytes_); }

private:
    std::uint64_t size_;
    Buffer bytes_;
};

}  // namespace nemra::core::worker
