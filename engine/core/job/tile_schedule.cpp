#include "engine/core/job/tile_schedule.h"

#include <algorithm>

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

TileSchedule::TileSchedule(TileGrid grid) : grid_(grid), nextSample_(grid.count(), 0) {}

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
    const auto found = std::find_if(returned_.rbegin(), returned_.rend(), [&](const Piece& p) { return p.first < limit; });
    if (found == returned_.rend()) return std::nullopt;
    Piece piece = *found;
    if (const auto rest = cutBehind(piece, limit - piece.first)) {
        *found = *rest;
    } else {
        returned_.erase(std::next(found).base());
    }
    return piece;
}

std::optional<Piece> TileSchedule::nextOfPass(std::uint32_t limit, std::uint32_t least) {
    if (nextSample_.empty()) return std::nullopt;
    for (;;) {
        // A limit that came down in the middle of a pass cuts it short, and one that was lifted lets it go on: each tile knows
        // its own next sample.
        while (cursor_ < nextSample_.size()) {
            const std::size_t tile = cursor_++;
            const std::uint32_t first = nextSample_[tile];
            if (first >= std::min(passEnd_, limit)) continue;
            const std::uint64_t end =
                std::min<std::uint64_t>(std::max<std::uint64_t>(passEnd_, std::uint64_t{first} + least), limit);
            nextSample_[tile] = static_cast<std::uint32_t>(end);
            return Piece{grid_.tile(tile), first, static_cast<std::uint32_t>(end) - first};
        }
        const std::uint32_t minimum = *std::min_element(nextSample_.begin(), nextSample_.end());
        if (minimum >= limit) return std::nullopt;
        if (minimum >= passEnd_) passEnd_ = minimum + std::clamp(minimum, 1U, kLongestPass);
        cursor_ = 0;
    }
}

void TileSchedule::giveBack(const Piece& piece) {
    returned_.push_back(piece);
    handedOut_ -= piece.samples();
}

bool TileSchedule::allHandedOut(std::uint32_t limit) const {
    limit = std::min(limit, HaltCondition::kEndOfSamples);
    return std::all_of(nextSample_.begin(), nextSample_.end(), [&](std::uint32_t next) { return next >= limit; }) &&
           std::none_of(returned_.begin(), returned_.end(), [&](const Piece& piece) { return piece.first < limit; });
}

std::uint64_t TileSchedule::left(std::uint32_t limit) const noexcept {
    const std::uint64_t pixels = static_cast<std::uint64_t>(grid_.width) * static_cast<std::uint64_t>(grid_.height);
    const std::uint64_t all = pixels * std::min(limit, HaltCondition::kEndOfSamples);
    return all > handedOut_ ? all - handedOut_ : 0;
}

}  // namespace nemra::core
