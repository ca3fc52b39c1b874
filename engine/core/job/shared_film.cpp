#include "engine/core/job/shared_film.h"

#include <mutex>
#include <utility>

#include "engine/core/film/arrays.h"
#include "engine/core/film/cut_out.h"

namespace nemra::core {

SharedFilm::SharedFilm(const PreparedScene& scene, TileGrid grid) : grid_(grid), film_(scene.makeFilm()), locks_(grid.count()) {}

void SharedFilm::keepAccount(const ResumePoint* from) {
    done_.reserve(grid_.count());
    for (std::size_t i = 0; i < grid_.count(); ++i) done_.emplace_back(grid_.tile(i));
    if (!from) return;
    addCutOut(*film_, *from->film);
    for (const Piece& piece : from->progress->done) done_[indexOf(piece)].add(piece);
}

PreparedScene::Counts SharedFilm::render(const PreparedScene& scene, const Piece& piece, const std::atomic<bool>& cancel) {
    if (done_.empty()) {
        const std::lock_guard lock(locks_[indexOf(piece)]);
        return scene.render(*film_, piece.tile, piece.first, piece.count, cancel);
    }
    const auto aside = scene.makeFilm(piece.tile);
    const auto counts = scene.render(*aside, piece.tile, piece.first, piece.count, cancel);
    if (counts.samples < piece.samples()) return {};
    add(piece, *aside);
    return counts;
}

void SharedFilm::add(const Piece& piece, const Film& cutOut) {
    const std::size_t tile = indexOf(piece);
    const TileLock::First lock(locks_[tile]);
    if (!done_.empty()) done_[tile].add(piece);
    addCutOut(*film_, cutOut);
}

bool SharedFilm::fits(const Piece& piece, const Film& cutOut) const noexcept {
    const PreparedScene::Tile& tile = piece.tile;
    return cutOut.left == tile.x0 && cutOut.top == tile.y0 && cutOut.width == tile.x1 - tile.x0 &&
           cutOut.height == tile.y1 - tile.y0 && cutOut.channels.size() == film_->channels.size() && arraysFit(cutOut);
}

FilmState SharedFilm::copy(const PreparedScene& scene) const {
    FilmState copy{scene.makeFilm(), {}};
    eachTile([&](const Film& film, const PreparedScene::Tile& tile) {
        copyPixels(film, *copy.film, tile.x0, tile.y0, tile.x1, tile.y1);
        if (done_.empty()) return;
        const auto done = done_[grid_.indexOf(tile.x0, tile.y0)].done();
        copy.done.insert(copy.done.end(), done.begin(), done.end());
    });
    return copy;
}

void SharedFilm::eachTile(const std::function<void(const Film&, const PreparedScene::Tile&)>& look) const {
    for (std::size_t i = 0; i < locks_.size(); ++i) {
        const TileLock::First lock(locks_[i]);
        look(*film_, grid_.tile(i));
    }
}

FilmState SharedFilm::release() {
    FilmState state{std::move(film_), {}};
    for (const DoneSamples& tile : done_) {
        const auto done = tile.done();
        state.done.insert(state.done.end(), done.begin(), done.end());
    }
    done_.clear();
    return state;
}

}  // namespace nemra::core
