/// Chunks of OpenEXR's DWA compressions, before the library unpacks them.
#pragma once

#include <ImfHeader.h>

#include <span>

namespace nemra::core {

/// Whether a chunk, which stands for those pixels, holds as much of each kind of data as its channels need. The library compares
/// its counts with the room for them only, and takes what its memory held before for the rest.
/// Throws std::bad_alloc.
bool isWholeDwaChunk(const Imf::Header& header, const Imath::Box2i& pixels, std::span<const char> packed);

}  // namespace nemra::core
