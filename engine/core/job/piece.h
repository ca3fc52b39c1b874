/// A piece of the work of a render.
#pragma once

#include <cstdint>

#include "engine/core/render.h"

namespace nemra::core {

/// Samples [first, first + count) of each pixel of a tile, or of some rows of one.
struct Piece {
    PreparedScene::Tile tile{};
    std::uint32_t first = 0;
    std::uint32_t count = 0;

    bool operator==(const Piece&) const = default;
    std::uint64_t pixels() const noexcept {
        return static_cast<std::uint64_t>(tile.x1 - tile.x0) * static_cast<std::uint64_t>(tile.y1 - tile.y0);
    }
    std::uint64_t samples() const noexcept { return pixels() * count; }
    std::uint64_t end() const noexcept { return std::uint64_t{first} + count; }
};

}  // namespace nemra::core
