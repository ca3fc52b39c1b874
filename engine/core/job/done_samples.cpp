#include "engine/core/job/done_samples.h"

#include <algorithm>
#include <limits>

namespace nemra::core {

DoneSamples::DoneSamples(PreparedScene::Tile tile) : tile_(tile), bands_{{tile.y0, {}}} {}

bool DoneSamples::hasAny(const std::vector<Range>& ranges, const Range& range) {
    return std::any_of(ranges.begin(), ranges.end(), [&](const Range& r) { return r.first < range.end && range.first < r.end; });
}

void DoneSamples::insert(std::vector<Range>& ranges, const Range& range) {
    auto at = std::find_if(ranges.begin(), ranges.end(), [&](const Range& r) { return r.end >= range.first; });
    if (at != ranges.end() && at->end == range.first) {
        at->end = range.end;
    } else {
        at = ranges.insert(at, range);
    }
    const auto next = at + 1;
    if (next != ranges.end() && next->first == at->end) {
        at->end = next->end;
        ranges.erase(next);
    }
}

void DoneSamples::cutAt(int y) {
    const auto next = std::find_if(bands_.begin(), bands_.end(), [&](const Band& band) { return band.y0 >= y; });
    if (y >= tile_.y1 || (next != bands_.end() && next->y0 == y)) return;
    Band lower = *(next - 1);
    lower.y0 = y;
    bands_.insert(next, std::move(lower));
}

bool DoneSamples::add(const Piece& piece) {
    const PreparedScene::Tile& rows = piece.tile;
    if (rows.x0 != tile_.x0 || rows.x1 != tile_.x1 || rows.y0 < tile_.y0 || rows.y1 > tile_.y1 || rows.y0 >= rows.y1)
        return false;
    if (piece.count == 0 || piece.end() > std::numeric_limits<std::uint32_t>::max()) return false;
    const Range range{piece.first, static_cast<std::uint32_t>(piece.end())};
    for (std::size_t i = 0; i < bands_.size(); ++i) {
        if (bands_[i].y0 < rows.y1 && endOf(i) > rows.y0 && hasAny(bands_[i].ranges, range)) return false;
    }
    cutAt(rows.y0);
    cutAt(rows.y1);
    for (Band& band : bands_) {
        if (band.y0 >= rows.y0 && band.y0 < rows.y1) insert(band.ranges, range);
    }
    const auto same = [](const Band& a, const Band& b) { return a.ranges == b.ranges; };
    bands_.erase(std::unique(bands_.begin(), bands_.end(), same), bands_.end());
    return true;
}

std::vector<Piece> DoneSamples::done() const {
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i < bands_.size(); ++i) {
        for (const Range& range : bands_[i].ranges) pieces.push_back({rows(i), range.first, range.end - range.first});
    }
    return pieces;
}

std::vector<Piece> DoneSamples::missing(std::uint32_t first) const {
    std::vector<Piece> pieces;
    const std::uint32_t last = end();
    for (std::size_t i = 0; i < bands_.size(); ++i) {
        std::uint32_t from = first;
        for (const Range& range : bands_[i].ranges) {
            if (range.first > from) pieces.push_back({rows(i), from, range.first - from});
            from = std::max(from, range.end);
        }
        if (last > from) pieces.push_back({rows(i), from, last - from});
    }
    return pieces;
}

std::uint32_t DoneSamples::end() const noexcept {
    std::uint32_t last = 0;
    for (const Band& band : bands_) {
        if (!band.ranges.empty()) last = std::max(last, band.ranges.back().end);
    }
    return last;
}

}  // namespace nemra::core
