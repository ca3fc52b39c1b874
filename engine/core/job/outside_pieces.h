/// Pieces of work that others than our own threads have in hand.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>

#include "engine/core/job/piece.h"
#include "engine/core/job/tile_schedule.h"

namespace nemra::core {

/// Not thread-safe.
class OutsidePieces {
public:
    /// Gives the number by which the piece is known; none comes twice.
    std::uint64_t add(const Piece& piece);
    /// The piece, which is outstanding no more; none if it wasn't.
    std::optional<Piece> take(std::uint64_t id);
    void clear() noexcept;

    std::uint64_t samples() const noexcept { return samples_; }
    /// True if samples are outstanding below the index that the schedule has for their tile at that limit.
    bool anyBelow(std::uint32_t limit, const TileSchedule& schedule) const;

private:
    std::unordered_map<std::uint64_t, Piece> pieces_;
    std::uint64_t lastId_ = 0;
    std::uint64_t samples_ = 0;
};

}  // namespace nemra::core
