/// How an image is cut into tiles.
#pragma once

#include <algorithm>
#include <cstddef>

#include "engine/core/render.h"

namespace nemra::core {

/// Square tiles, row by row from the top left; those at the right and at the bottom may be cut off.
struct TileGrid {
    int width = 0;  ///< of the image
    int height = 0;
    int size = 1;  ///< of a tile

    /// `atOnce` threads will each want a tile of its own: small images get smaller tiles.
    static TileGrid fitting(int width, int height, int atOnce) noexcept {
        constexpr int largest = 16;  // small enough that a tile's film stays in a core's cache
        constexpr int smallest = 4;
        constexpr std::size_t tilesPerThread = 4;
        TileGrid grid{width, height, largest};
        while (grid.size > smallest && grid.count() < static_cast<std::size_t>(atOnce) * tilesPerThread) grid.size /= 2;
        return grid;
    }

    bool operator==(const TileGrid&) const = default;
    std::size_t columns() const noexcept { return static_cast<std::size_t>((width + size - 1) / size); }
    std::size_t rows() const noexcept { return static_cast<std::size_t>((height + size - 1) / size); }
    std::size_t count() const noexcept { return columns() * rows(); }
    PreparedScene::Tile tile(std::size_t index) const noexcept {
        const int x = static_cast<int>(index % columns()) * size;
        const int y = static_cast<int>(index / columns()) * size;
        return {x, y, std::min(x + size, width), std::min(y + size, height)};
    }
    /// Index of the tile that a pixel lies in.
    std::size_t indexOf(int x, int y) const noexcept {
        return static_cast<std::size_t>(y / size) * columns() + static_cast<std::size_t>(x / size);
    }
};

}  // namespace nemra::core
