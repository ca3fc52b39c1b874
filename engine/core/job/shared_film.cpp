#include "engine/core/job/shared_film.h"

#include <utility>

#include "engine/core/film/cut_out.h"

namespace nemra::core {

SharedFilm::SharedFilm(const PreparedScene& scene, TileGrid grid)
    : grid_(grid), film_(scene.makeFilm()), mutexes_(grid.count()) {}

PreparedScene::Counts SharedFilm::render(const PreparedScene& scene, const Piece& piece, const std::atomic<bool>& cancel) {
    const std::lock_guard lock(mutexOf(piece));
    return scene.render(*film_, piece.tile, piece.first, piece.count, cancel);
}

void SharedFilm::add(const Piece& piece, const Film& cutOut) {
    const std::lock_guard lock(mutexOf(piece));
    addCutOut(*film_, cutOut);
}

bool SharedFilm::fits(const Piece& piece, const Film& cutOut) const noexcept {
    const PreparedScene::Tile& tile = piece.tile;
    const std::size_t pixels = piece.pixels();
    const std::size_t cells = pixels * film_->channels.size();
    return cutOut.left == tile.x0 && cutOut.top == tile.y0 && cutOut.width == tile.x1 - tile.x0 &&
           cutOut.height == tile.y1 - tile.y0 && cutOut.high.size() == cells && cutOut.low.size() == cells &&
           cutOut.samples.size() == pixels && cutOut.squares.upper.size() == pixels && cutOut.squares.lower.size() == pixels &&
           cutOut.squares.part.size() == pixels && cutOut.depth.size() == pixels && cutOut.depthSamples.size() == pixels;
}

std::shared_ptr<Film> SharedFilm::copy(const PreparedScene& scene) const {
    std::shared_ptr<Film> copy = scene.makeFilm();
    for (std::size_t i = 0; i < mutexes_.size(); ++i) {
        const PreparedScene::Tile tile = grid_.tile(i);
        const std::lock_guard lock(mutexes_[i]);
        copyPixels(*film_, *copy, tile.x0, tile.y0, tile.x1, tile.y1);
    }
    return copy;
}

}  // namespace nemra::core
