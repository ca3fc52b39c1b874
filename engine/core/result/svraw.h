/// svraw: a result in a file, whole and without loss, so that a render can be gone on with and merged after it was read back.
/// docs/formats.md describes the bytes.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>

#include "engine/common/buffer.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

/// Version of the form that is written; readers take this one and earlier ones.
inline constexpr std::uint32_t kSvrawVersion = 2;
/// First bytes of a file. As in PNG, one that isn't ASCII, and both ends of a line, so that a transfer as text is noticed.
inline constexpr std::string_view kSvrawMagic{"\x89SVRAW\r\n", 8};

/// Takes the next bytes of a file; false if no more are wanted. Must not call the host.
using TakeBytes = std::function<bool(std::span<const char>)>;

/// Gives the bytes of a file as they are made, one call at a time but not always on this thread. Throws what `take` throws,
/// std::bad_alloc, or std::length_error for nodes nested deeper than readers bear.
void writeSvraw(const Raw& raw, const TakeBytes& take);
/// The bytes of a file. Throws std::bad_alloc, or std::length_error for nodes nested deeper than readers bear.
Buffer writeSvraw(const Raw& raw);

/// Null after one error message with file and byte. No length in the file is trusted: what is allocated stays below 64 MiB plus
/// 200 times the size of the file, and no array is above kMaxBufferBytes.
std::shared_ptr<Raw> readSvraw(std::span<const char> bytes, const std::string& origin);

}  // namespace nemra::core
