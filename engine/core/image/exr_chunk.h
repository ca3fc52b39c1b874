/// The packed rows of an OpenEXR file, before the library unpacks them.
#pragma once

#include <ImfHeader.h>

#include <cstdint>
#include <span>

namespace nemra::core {

/// How many multiples of `step` lie in [first, last]: the samples of a channel.
std::uint64_t exrMultiples(std::int64_t first, std::int64_t last, std::int64_t step);

/// Whether a zlib stream gives just so many bytes. Throws std::bad_alloc.
bool inflatesTo(std::uint64_t size, std::span<const char> packed);

/// Whether a chunk, which stands for those pixels, unpacks to as many bytes as they need. The library doesn't ask: where ZIP,
/// RLE, PXR24 or bare rows end too early, or nothing is there at all, it gives what its memory held before. The ends of other
/// compressions are left to it, which looks at them itself. Throws std::bad_alloc.
bool isWholeExrChunk(const Imf::Header& header, const Imath::Box2i& pixels, std::span<const char> packed);

}  // namespace nemra::core
