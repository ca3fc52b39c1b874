/// The gzip forms of the encodings (RFC 1952): one member, or large contents in several, of which each but the last says its
/// size.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "engine/common/buffer.h"

namespace nemra::node {

/// One member. Contents that would be smaller than readers take are stored in part. Throws std::length_error for more than
/// readers take.
NEMRA_API Buffer gzip(std::span<const char> bytes);
/// The same behind what is there. Throws as gzip does.
NEMRA_API void appendGzip(Buffer& out, std::span<const char> bytes);

/// Contents that come one piece after the other, and are never there as a whole. Throws as gzip does.
class NEMRA_API GzipPieces {
public:
    /// A member of its own.
    void add(std::span<const char> piece);
    /// All of it. Without any pieces before it, the rest is one member, as gzip makes it.
    Buffer finish(std::span<const char> rest) &&;

private:
    Buffer out_;
    std::size_t taken_ = 0;
};

/// True if the bytes begin as gzip does.
NEMRA_API bool isGzip(std::span<const char> bytes) noexcept;

/// Whether so many bytes are there for sure, as in a file that was read, or a caller has said so, who may be wrong.
enum class Length { known, claimed };

/// Inflates into `out`. False with the reason in `why` for damaged bytes, for several members that don't say how long they are,
/// and for contents above kMaxInflatedBytes or, beyond kFreeInflatedBytes, above kMaxGzipRatio times the bytes. Of a known number
/// of bytes the ends of members are looked at first, and no more memory is taken than they say that they inflate to. Of a claimed
/// one bytes are read from the front, and none behind the last member but for the few that the library loads ahead.
NEMRA_API bool gunzip(std::span<const char> bytes, Buffer& out, std::string& why, Length length);
/// The same of a known number; the memory of bytes that have been inflated is given back, member by member.
NEMRA_API bool gunzip(Buffer bytes, Buffer& out, std::string& why);

}  // namespace nemra::node
