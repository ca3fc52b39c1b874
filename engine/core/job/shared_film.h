/// The film of a render under way, to which several threads add while others copy it.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "engine/core/job/piece.h"
#include "engine/core/job/tile_grid.h"

namespace nemra::core {

/// Each tile has a lock of its own, held while the tile is written or read.
class SharedFilm {
public:
    SharedFilm(const PreparedScene& scene, TileGrid grid);

    const TileGrid& grid() const noexcept { return grid_; }

    /// Renders a piece straight into the film.
    PreparedScene::Counts render(const PreparedScene& scene, const Piece& piece, const std::atomic<bool>& cancel);
    /// Adds what was rendered elsewhere into a film of the piece's size; see fits().
    void add(const Piece& piece, const Film& cutOut);
    /// True if the cut-out has just the pixels of the piece, and the channels of this film.
    bool fits(const Piece& piece, const Film& cutOut) const noexcept;

    /// Tile by tile, so that render threads wait for this copy only where they are just about to go on.
    std::shared_ptr<Film> copy(const PreparedScene& scene) const;
    /// Hands over the film itself. No thread may use this object any more.
    std::shared_ptr<Film> release() noexcept { return std::move(film_); }

private:
    std::mutex& mutexOf(const Piece& piece) const { return mutexes_[grid_.indexOf(piece.tile.x0, piece.tile.y0)]; }

    const TileGrid grid_;
    std::shared_ptr<Film> film_;
    mutable std::vector<std::mutex> mutexes_;  ///< per tile
};

}  // namespace nemra::core
