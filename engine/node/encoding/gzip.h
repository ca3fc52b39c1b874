/// The gzip forms of the encodings (RFC 1952): one member, no more.
#pragma once

#include <span>
#include <string>

#include "engine/common/buffer.h"

namespace nemra::node {

/// Throws std::length_error if that is larger than readers take.
NEMRA_API Buffer gzip(std::span<const char> bytes);

/// True if the bytes begin as gzip does.
NEMRA_API bool isGzip(std::span<const char> bytes) noexcept;

/// Inflates into `out`. False with the reason in `why` for damaged bytes, for several members, and for contents above
/// kMaxInflatedBytes or, beyond 64 MiB, above 200 times the bytes: scenes compress by a factor of 2 to 30, what is made to fill
/// the memory by 1000. Takes no more memory than the bytes say that they inflate to.
NEMRA_API bool gunzip(std::span<const char> bytes, Buffer& out, std::string& why);

}  // namespace nemra::node
