/// Reading a file whole.
#pragma once

#include <optional>
#include <string>

#include "engine/common/buffer.h"

namespace nemra::core {

/// Bytes of a result or a picture that are read at most.
inline constexpr std::uint64_t kMaxFileBytes = std::uint64_t{16} << 30;

/// None after one error message with the system's reason. Only plain files are read: a device or a pipe might never end.
std::optional<Buffer> readFileWhole(const std::string& path);

}  // namespace nemra::core
