/// The gzip forms of the encodings (RFC 1952): one member, no more.
#pragma once

#include <span>
#include <string>

#include "engine/common/buffer.h"

namespace nemra::node {

/// Contents that would be smaller than readers take are stored in part. Throws std::length_error for more than readers take.
NEMRA_API Buffer gzip(std::span<const char> bytes);

/// True if the bytes begin as gzip does.
NEMRA_API bool isGzip(std::span<const char> bytes) noexcept;

/// Whether so many bytes are there for sure, as in a file that was read, or a caller has said so, who may be wrong.
enum class Length { known, claimed };

/// Inflates into `out`. False with the reason in `why` for damaged bytes, for several members, and for contents above
/// kMaxInflatedBytes or, beyond kFreeInflatedBytes, above kMaxGzipRatio times the bytes. Of a known number of bytes the end is
/// looked at first, and no more memory is taken than they say that they inflate to. Of a claimed one bytes are read from the
/// front, and none behind the first member but for the few that the library loads ahead.
NEMRA_API bool gunzip(std::span<const char> bytes, Buffer& out, std::string& why, Length length);

}  // namespace nemra::node
