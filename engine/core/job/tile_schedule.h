/// In which order the pixels of an image get their samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "engine/core/render.h"

namespace nemra::core {

/// Progressive passes over square tiles: all tiles get sample 0, then 1, then 2-3, 4-7, 8-15 and so on, so that the picture is
/// even at any moment and long passes keep memory local. Not thread-safe.
class TileSchedule {
public:
    /// `threads` that will work at the same time: small images get smaller tiles, so that each thread finds one.
    TileSchedule(int width, int height, int threads);

    struct Task {
        std::size_t tile;
        std::uint32_t first, count;  ///< samples
    };
    /// The next piece of work below the sample index `limit`. None if all of it is handed out, or if its tile is still being
    /// worked on: a tile's samples are added in the order of their numbers, so that even plain sums come out the same.
    std::optional<Task> next(std::uint32_t limit);
    /// Says that the task of that tile is done.
    void finished(std::size_t tile) { busy_[tile] = false; }
    /// Samples that every pixel has been handed out.
    std::uint32_t handedOut() const noexcept { return minimum_; }

    std::size_t tileCount() const noexcept { return tiles_.size(); }
    PreparedScene::Tile tile(std::size_t index) const noexcept { return tiles_[index]; }

private:
    std::vector<PreparedScene::Tile> tiles_;
    std::vector<std::uint32_t> nextSample_;  ///< per tile
    std::vector<bool> busy_;                 ///< per tile
    std::size_t cursor_ = 0;                 ///< tile that this pass looks at next
    std::uint32_t passEnd_ = 1;              ///< sample index at which this pass ends
    std::uint32_t minimum_ = 0;
};

}  // namespace nemra::core
