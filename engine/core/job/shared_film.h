/// The film of a render under way, to which several threads add while others copy it.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include "engine/core/job/done_samples.h"
#include "engine/core/job/piece.h"
#include "engine/core/job/resume_point.h"
#include "engine/core/job/tile_grid.h"
#include "engine/core/job/tile_lock.h"

namespace nemra::core {

/// A film, and what is in it if that is kept account of.
struct FilmState {
    std::shared_ptr<Film> film;
    std::vector<Piece> done;
};

/// Each tile has a lock of its own, held while the tile is written or read.
class SharedFilm {
public:
    SharedFilm(const PreparedScene& scene, TileGrid grid);

    /// Keeps account of the samples from now on, so that a render can go on from a copy. Before anything is added. With what an
    /// earlier render of the same tiles had, unless that is null.
    void keepAccount(const ResumePoint* from);
    /// Per tile; empty without account. For the time before anything is added.
    const std::vector<DoneSamples>& done() const noexcept { return done_; }

    const TileGrid& grid() const noexcept { return grid_; }
    std::size_t channels() const noexcept { return film_->channels.size(); }  ///< how many; before release()

    /// Renders a piece into the film: straight into it, or on the side where account is kept, so that what `cancel` has cut short
    /// is left out.
    PreparedScene::Counts render(const PreparedScene& scene, const Piece& piece, const std::atomic<bool>& cancel);
    /// Adds what was rendered elsewhere into a film of the piece's size; see fits().
    void add(const Piece& piece, const Film& cutOut);
    /// True if the cut-out has just the pixels of the piece, and the channels of this film.
    bool fits(const Piece& piece, const Film& cutOut) const noexcept;

    /// Tile by tile, so that render threads wait for this copy only where they are just about to go on.
    FilmState copy(const PreparedScene& scene) const;
    /// Shows each tile of the film to `look`, which has the tile's lock.
    void eachTile(const std::function<void(const Film& film, const PreparedScene::Tile& tile)>& look) const;
    /// Hands over the film itself. No thread may use this object any more.
    FilmState release();

private:
    std::size_t indexOf(const Piece& piece) const noexcept { return grid_.indexOf(piece.tile.x0, piece.tile.y0); }

    const TileGrid grid_;
    std::shared_ptr<Film> film_;
    std::vector<DoneSamples> done_;        ///< per tile, or none
    mutable std::vector<TileLock> locks_;  ///< per tile
};

}  // namespace nemra::core
