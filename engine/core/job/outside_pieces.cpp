#include "engine/core/job/outside_pieces.h"

#include <algorithm>

namespace nemra::core {

std::uint64_t OutsidePieces::add(const Piece& piece) {
    pieces_.emplace(++lastId_, piece);
    samples_ += piece.samples();
    return lastId_;
}

std::optional<Piece> OutsidePieces::take(std::uint64_t id) {
    const auto found = pieces_.extract(id);
    if (found.empty()) return std::nullopt;
    samples_ -= found.mapped().samples();
    return found.mapped();
}

void OutsidePieces::clear() noexcept {
    pieces_.clear();
    samples_ = 0;
}

bool OutsidePieces::anyBelow(std::uint32_t limit, const TileSchedule& schedule) const {
    return std::any_of(pieces_.begin(), pieces_.end(),
                       [&](const auto& entry) { return entry.second.first < schedule.limitOf(entry.second.tile, limit); });
}

}  // namespace nemra::core
