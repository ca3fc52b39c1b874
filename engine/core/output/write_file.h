/// Writing a file whole or not at all.
#pragma once

#include <span>
#include <string>

namespace nemra::core {

/// Writes `bytes` under the name `path`: into a temporary file beside it, flushed to the disk, then renamed, so that at any
/// moment the name stands for the old file or the new one. A name that stands for a device or a pipe is written to directly. On
/// failure false, one error message with the system's reason, no file left over, the old file as it was.
bool writeFileWhole(const std::string& path, std::span<const char> bytes);

/// The system's reason why writeFileWhole would fail now, as far as that shows without writing; "" for none.
std::string whyNotWritable(const std::string& path);

}  // namespace nemra::core
