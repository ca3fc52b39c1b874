/// Which samples of a tile are in the film.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/core/job/piece.h"

namespace nemra::core {

/// Mostly all rows have the same samples from 0 on; a render that was cut short leaves rows and ranges of other lengths.
class DoneSamples {
public:
    explicit DoneSamples(PreparedScene::Tile tile);

    /// Samples of some rows of the tile. False and nothing changes if the piece isn't of this tile, or some of its samples are
    /// there already.
    bool add(const Piece& piece);

    /// What is there, in as few pieces as rows of the same samples allow.
    std::vector<Piece> done() const;
    /// What isn't there from the index `first` to end().
    std::vector<Piece> missing(std::uint32_t first = 0) const;
    /// One more than the highest sample that any pixel has.
    std::uint32_t end() const noexcept;

private:
    struct Range {
        std::uint32_t first, end;
        bool operator==(const Range&) const = default;
    };
    /// Rows that have the same samples, from y0 to the next band's.
    struct Band {
        int y0;
        std::vector<Range> ranges;  ///< in order, none touching the next
    };
    void cutAt(int y);
    int endOf(std::size_t band) const noexcept { return band + 1 < bands_.size() ? bands_[band + 1].y0 : tile_.y1; }
    static bool hasAny(const std::vector<Range>& ranges, const Range& range);
    static void insert(std::vector<Range>& ranges, const Range& range);
    PreparedScene::Tile rows(std::size_t band) const noexcept { return {tile_.x0, bands_[band].y0, tile_.x1, endOf(band)}; }

    PreparedScene::Tile tile_;
    std::vector<Band> bands_;  ///< from the top; neighbours differ
};

}  // namespace nemra::core
