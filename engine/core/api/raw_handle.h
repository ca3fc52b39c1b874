/// What the functions on raws share.
#pragma once

#include <atomic>
#include <cstdint>

#include "engine/common/slot_table.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

/// Goes up when a caller has changed or released raws, so that readers look again. A result that a newer one has superseded
/// doesn't count: who is in the middle of reading it reads it to the end.
inline std::atomic<std::uint64_t>& rawEpoch() noexcept {
    static constinit std::atomic<std::uint64_t> epoch{1};
    return epoch;
}
inline void rawChanged() noexcept { rawEpoch().fetch_add(1, std::memory_order_release); }

/// The raw of a handle, or null. This thread keeps it alive until it asks for another one, also when it is retired elsewhere, so
/// that a text of it can be handed out.
inline const Raw* keptRaw(const nemra_raw_t* handle) noexcept { return findHot<Raw>(handle); }

}  // namespace nemra::core
