/// In which order the pixels of an image get their samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "engine/core/job/done_samples.h"
#include "engine/core/job/piece.h"
#include "engine/core/job/tile_grid.h"

namespace nemra::core {

/// Progressive passes over the tiles: all tiles get sample 0, then 1, then 2-3, 4-7, 8-15 and so on, so that the picture is
/// even at any moment and long passes keep memory local. Not thread-safe.
class TileSchedule {
public:
    /// Samples before the index `first` are nobody's here.
    explicit TileSchedule(TileGrid grid, std::uint32_t first = 0);

    /// Begins with what isn't done yet; `done` has one for each tile.
    void goOnFrom(const std::vector<DoneSamples>& done);

    /// From the sample index `pilot` on each tile gets samples in proportion to its share, with the mean 1: limits are then means
    /// over the image.
    void setShares(std::uint32_t pilot, std::vector<double> shares);
    const std::vector<double>& shares() const noexcept { return shares_; }  ///< per tile; empty before they are set
    /// Sample index at which a tile has its part of such a limit.
    std::uint32_t limitOf(const PreparedScene::Tile& tile, std::uint32_t limit) const noexcept;

    /// What a piece should be like. A pass that is longer than `least` isn't cut short for it; `most` is kept to, but for a
    /// piece having at least one sample of each of its pixels.
    struct Wish {
        std::uint32_t least = 1;          ///< samples of each pixel, even ahead of the pass
        std::uint64_t most = UINT64_MAX;  ///< samples of all pixels together
    };
    /// The next piece of work below the sample index `limit`; none if all of it is handed out. What came back goes first.
    std::optional<Piece> next(std::uint32_t limit, const Wish& wish);
    std::optional<Piece> next(std::uint32_t limit) { return next(limit, Wish{}); }
    /// Takes back a piece that was handed out and won't be done, or the rest of one.
    void giveBack(const Piece& piece);

    /// True if nothing is left below the limit.
    bool allHandedOut(std::uint32_t limit) const;
    /// Samples below the limit that aren't handed out; a guess after a limit that came down.
    std::uint64_t left(std::uint32_t limit) const noexcept;

    const TileGrid& grid() const noexcept { return grid_; }

private:
    std::uint32_t limitOf(std::size_t tile, std::uint32_t limit) const noexcept;
    std::uint64_t allBelow(std::uint32_t limit) const noexcept;
    std::uint32_t levelOf(std::size_t tile) const noexcept;
    bool hasAll(std::uint32_t limit) const noexcept;  ///< but for what came back
    std::optional<Piece> nextReturned(std::uint32_t limit);
    std::optional<Piece> nextOfPass(std::uint32_t limit, std::uint32_t least);

    TileGrid grid_;
    std::uint32_t first_;
    std::vector<std::uint32_t> nextSample_;  ///< per tile
    std::vector<Piece> returned_;
    std::uint32_t pilot_ = 0;
    std::vector<double> shares_;   ///< per tile; empty where all are 1
    std::size_t cursor_ = 0;       ///< tile that this pass looks at next
    std::uint32_t passEnd_;        ///< sample index at which this pass ends
    std::uint64_t handedOut_ = 0;  ///< samples, those that came back taken off and those before the first one added
};

}  // namespace nemra::core
