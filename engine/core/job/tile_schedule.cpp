#include "engine/core/job/tile_schedule.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "engine/core/job/halt_condition.h"

namespace nemra::core {

namespace {

constexpr std::uint32_t kLongestPass = 64;  // samples; longer ones gain nothing and make the picture uneven

/// Keeps the first samples of a piece and gives back the rest.
std::optional<Piece> cutBehind(Piece& piece, std::uint32_t count) {
    if (count >= piece.count) return std::nullopt;
    const Piece rest{piece.tile, piece.first + count, piece.count - count};
    piece.count = count;
    return rest;
}

}  // namespace

TileSchedule::TileSchedule(TileGrid grid, std::uint32_t first)
    : grid_(grid), first_(first), nextSample_(grid.count(), first), passEnd_(first + 1), handedOut_(allBelow(first)) {}

void TileSchedule::goOnFrom(const std::vector<DoneSamples>& done) {
    handedOut_ = 0;
    for (std::size_t i = 0; i < nextSample_.size(); ++i) {
        nextSample_[i] = std::max(first_, done[i].end());
        handedOut_ += Piece{grid_.tile(i), 0, nextSample_[i]}.samples();
        for (const Piece& piece : done[i].missing(first_)) giveBack(piece);
    }
}

std::optional<Piece> TileSchedule::next(std::uint32_t limit, const Wish& wish) {
    limit = std::min(limit, HaltCondition::kEndOfSamples);
    auto piece = nextReturned(limit);
    if (!piece) piece = nextOfPass(limit, wish.least);
    if (!piece) return std::nullopt;
    handedOut_ += piece->samples();
    const std::uint64_t most = std::max<std::uint64_t>(1, wish.most / std::max<std::uint64_t>(1, piece->pixels()));
    if (const auto rest = cutBehind(*piece, static_cast<std::uint32_t>(std::min<std::uint64_t>(most, piece->count)))) {
        giveBack(*rest);
    }
    return piece;
}

std::optional<Piece> TileSchedule::nextReturned(std::uint32_t limit) {
    const auto found = std::find_if(returned_.rbegin(), returned_.rend(),
                                    [&](const Piece& piece) { return piece.first < limitOf(piece.tile, limit); });
    if (found == returned_.rend()) return std::nullopt;
    Piece piece = *found;
    if (const auto rest = cutBehind(piece, limitOf(piece.tile, limit) - piece.first)) {
        *found = *rest;
    } else {
        returned_.erase(std::next(found).base());
    }
    return piece;
}

std::optional<Piece> TileSchedule::nextOfPass(std::uint32_t limit, std::uint32_t least) {
    for (;;) {
        // A limit that came down in the middle of a pass cuts it short, and one that was lifted lets it go on: each tile knows
        // its own next sample.
        while (cursor_ < nextSample_.size()) {
            const std::size_t tile = cursor_++;
            const std::uint32_t first = nextSample_[tile];
            if (first >= limitOf(tile, std::min(passEnd_, limit))) continue;
            const std::uint64_t pass = std::max<std::uint64_t>(limitOf(tile, passEnd_), std::uint64_t{first} + least);
            nextSample_[tile] = static_cast<std::uint32_t>(std::min<std::uint64_t>(pass, limitOf(tile, limit)));
            return Piece{grid_.tile(tile), first, nextSample_[tile] - first};
        }
        if (hasAll(limit)) return std::nullopt;
        if (hasAll(passEnd_)) {
            // A pass begins where the tiles are, which may be far on: with a render that was gone on with.
            std::uint32_t level = HaltCondition::kEndOfSamples;
            for (std::size_t tile = 0; tile < nextSample_.size(); ++tile) level = std::min(level, levelOf(tile));
            level = std::max(level, passEnd_);
            passEnd_ = level + std::clamp(level - first_, 1U, kLongestPass);
        }
        cursor_ = 0;
    }
}

void TileSchedule::setShares(std::uint32_t pilot, std::vector<double> shares) {
    pilot_ = pilot;
    shares_ = std::move(shares);
}

std::uint32_t TileSchedule::limitOf(std::size_t tile, std::uint32_t limit) const noexcept {
    if (shares_.empty() || limit <= pilot_) return limit;
    const double more = std::round(shares_[tile] * (limit - pilot_));
    return static_cast<std::uint32_t>(std::min<double>(pilot_ + more, HaltCondition::kEndOfSamples));
}

std::uint32_t TileSchedule::limitOf(const PreparedScene::Tile& tile, std::uint32_t limit) const noexcept {
    return limitOf(grid_.indexOf(tile.x0, tile.y0), limit);
}

/// The limit at which the tile has what it needs, rounded down.
std::uint32_t TileSchedule::levelOf(std::size_t tile) const noexcept {
    const std::uint32_t next = nextSample_[tile];
    if (shares_.empty() || next <= pilot_) return next;
    return static_cast<std::uint32_t>(
        std::min<double>(pilot_ + std::floor((next - pilot_) / shares_[tile]), HaltCondition::kEndOfSamples));
}

bool TileSchedule::hasAll(std::uint32_t limit) const noexcept {
    for (std::size_t tile = 0; tile < nextSample_.size(); ++tile) {
        if (nextSample_[tile] < limitOf(tile, limit)) return false;
    }
    return true;
}

void TileSchedule::giveBack(const Piece& piece) {
    returned_.push_back(piece);
    handedOut_ -= piece.samples();
}

bool TileSchedule::allHandedOut(std::uint32_t limit) const {
    limit = std::min(limit, HaltCondition::kEndOfSamples);
    return hasAll(limit) && std::none_of(returned_.begin(), returned_.end(),
                                         [&](const Piece& piece) { return piece.first < limitOf(piece.tile, limit); });
}

std::uint64_t TileSchedule::allBelow(std::uint32_t limit) const noexcept {
    const std::uint64_t pixels = static_cast<std::uint64_t>(grid_.width) * static_cast<std::uint64_t>(grid_.height);
    return pixels * std::min(limit, HaltCondition::kEndOfSamples);
}

std::uint64_t TileSchedule::left(std::uint32_t limit) const noexcept {
    const std::uint64_t all = allBelow(limit);
    return all > handedOut_ ? all - handedOut_ : 0;
}

}  // namespace nemra::core
