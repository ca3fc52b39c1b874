/// Bytes that a caller takes one by one, and the two answers of functions that succeed with 0.
#pragma once

#include <span>

#include "module/flat/nemra_raw.h"

namespace nemra::core {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;

/// kFailed if the sink doesn't take a byte.
inline int giveBytes(std::span<const char> bytes, void* user, nemra_byte_sink sink) {
    for (const char byte : bytes) {
        if (sink(user, byte) != 1) return kFailed;
    }
    return kDone;
}

}  // namespace nemra::core
