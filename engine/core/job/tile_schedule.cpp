#include "engine/core/job/tile_schedule.h"

#include <algorithm>

#include "engine/core/job/halt_condition.h"

namespace nemra::core {

namespace {

constexpr int kLargestTile = 16;  // pixels; small enough that a tile's film stays in a core's cache
constexpr int kSmallestTile = 4;
constexpr int kTilesPerThread = 4;
constexpr std::uint32_t kLongestPass = 64;  // samples; longer ones gain nothing and make the picture uneven

int tileSize(int width, int height, int threads) {
    int size = kLargestTile;
    const auto count = [&] { return ((width + size - 1) / size) * static_cast<long long>((height + size - 1) / size); };
    while (size > kSmallestTile && count() < static_cast<long long>(threads) * kTilesPerThread) size /= 2;
    return size;
}

}  // namespace

TileSchedule::TileSchedule(int width, int height, int threads) {
    const int size = tileSize(width, height, threads);
    for (int y = 0; y < height; y += size) {
        for (int x = 0; x < width; x += size) {
            tiles_.push_back({x, y, std::min(x + size, width), std::min(y + size, height)});
        }
    }
    nextSample_.assign(tiles_.size(), 0);
    busy_.assign(tiles_.size(), false);
}

std::optional<TileSchedule::Task> TileSchedule::next(std::uint32_t limit) {
    if (tiles_.empty()) return std::nullopt;
    for (;;) {
        // A limit that came down in the middle of a pass cuts it short, and one that was lifted lets it go on: each tile knows
        // its own next sample.
        while (cursor_ < tiles_.size()) {
            const std::size_t tile = cursor_;
            const std::uint32_t first = nextSample_[tile];
            const std::uint32_t end = std::min(passEnd_, limit);
            if (first < end && busy_[tile]) return std::nullopt;
            ++cursor_;
            if (first >= end) continue;
            nextSample_[tile] = end;
            busy_[tile] = true;
            if (cursor_ == tiles_.size()) minimum_ = *std::min_element(nextSample_.begin(), nextSample_.end());
            return Task{tile, first, end - first};
        }
        minimum_ = *std::min_element(nextSample_.begin(), nextSample_.end());
        if (minimum_ >= std::min(limit, HaltCondition::kEndOfSamples)) return std::nullopt;
        if (minimum_ >= passEnd_) passEnd_ = minimum_ + std::clamp(minimum_, 1U, kLongestPass);
        cursor_ = 0;
    }
}

}  // namespace nemra::core
