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

/// Inflates into `out`. False with the reason in `why` for damaged bytes, for several members, and for contents above
/// kMaxInflatedBytes or, beyond kFreeInflatedBytes, above kMaxGzipRatio times the bytes. Takes no more memory than the bytes say
/// that they inflate to.
NEMRA_API bool gunzip(std::span<const char> bytes, Buffer& out, std::string& why);

}  // namespace nemra::node
