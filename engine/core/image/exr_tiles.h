/// The tiles of an OpenEXR file, before the library unpacks them.
#pragma once

#include <ImfHeader.h>

#include <cstddef>
#include <span>

namespace nemra::core {

/// Throws a PictureFault if a tile of full resolution, of the first part of a file, that holds pixels of these rows isn't where
/// the file says, or isn't whole (see isWholeExrChunk). `tables` is where the tables of places begin (see checkExrHead). The
/// library gives packed tiles in their order in the file only, so that it can't be asked for them. May throw std::bad_alloc.
void checkExrTiles(const Imf::Header& header, std::span<const char> file, std::size_t tables, int firstRow, int lastRow);

}  // namespace nemra::core
