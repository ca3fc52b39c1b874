#include "engine/core/image/exr_tiles.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "engine/common/byte_reader.h"
#include "engine/core/image/exr_chunk.h"
#include "engine/core/image/exr_head.h"
#include "engine/core/image/picture_film.h"

namespace nemra::core {

namespace {

std::span<const char> from(std::span<const char> file, std::uint64_t place) {
    return place <= file.size() ? file.subspan(static_cast<std::size_t>(place)) : std::span<const char>();
}

/// What the file has at a place for that tile; empty if that is another one or none.
std::span<const char> tileAt(std::span<const char> file, std::uint64_t place, std::int64_t column, std::int64_t row) {
    ByteReader reader(from(file, place));
    bool isIt = true;
    if (hasSeveralParts(file)) isIt = reader.value<std::int32_t>() == 0;
    isIt = reader.value<std::int32_t>() == column && isIt;
    isIt = reader.value<std::int32_t>() == row && isIt;
    for (int level = 0; level < 2; ++level) isIt = reader.value<std::int32_t>() == 0 && isIt;
    const auto size = reader.value<std::int32_t>();
    return isIt && size > 0 ? reader.take(static_cast<std::size_t>(size)) : std::span<const char>();
}

}  // namespace

void checkExrTiles(const Imf::Header& header, std::span<const char> file, std::size_t tables, int firstRow, int lastRow) {
    const Imath::Box2i& window = header.dataWindow();
    const std::int64_t wide = header.tileDescription().xSize;
    const std::int64_t high = header.tileDescription().ySize;
    const std::int64_t columns = (std::int64_t{window.max.x} - window.min.x) / wide + 1;
    for (std::int64_t row = (firstRow - window.min.y) / high; row <= (lastRow - window.min.y) / high; ++row) {
        for (std::int64_t column = 0; column < columns; ++column) {
            // Full resolution comes first in the table, rows from the top.
            const auto entry = static_cast<std::uint64_t>(row * columns + column);
            const auto place = ByteReader(from(file, tables + 8 * entry)).value<std::uint64_t>();
            const std::int64_t x = window.min.x + column * wide;
            const std::int64_t y = window.min.y + row * high;
            const Imath::Box2i pixels({static_cast<int>(x), static_cast<int>(y)},
                                      {static_cast<int>(std::min<std::int64_t>(x + wide - 1, window.max.x)),
                                       static_cast<int>(std::min<std::int64_t>(y + high - 1, window.max.y))});
            if (!isWholeExrChunk(header, pixels, tileAt(file, place, column, row))) {
                throw PictureFault("tile " + std::to_string(column) + " of row " + std::to_string(row) +
                                   " isn't whole, or not where it should be");
            }
        }
    }
}

}  // namespace nemra::core
