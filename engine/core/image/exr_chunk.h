/// The packed rows of an OpenEXR file, before the library unpacks them.
#pragma once

#include <ImfHeader.h>

#include <span>

namespace nemra::core {

/// Whether a chunk of scanlines unpacks to as many bytes as its rows need, `rows` from `first` on. The library doesn't ask: where
/// ZIP, RLE, PXR24 or bare rows end too early, it gives what its memory held before. The other compressions are left to it, which
/// looks at their ends itself. Throws std::bad_alloc.
bool isWholeExrChunk(const Imf::Header& header, int first, int rows, std::span<const char> packed);

}  // namespace nemra::core
