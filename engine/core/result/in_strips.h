/// Walking pixels where one side is kept by columns and the other by rows.
#pragma once

#include <algorithm>

#include "engine/core/output/parallel_rows.h"

namespace nemra::core {

inline constexpr int kStripColumns = 16;  ///< the 64 bytes of a cache line hold as many floats of a row

template <class Function>
void forEachInStrip(int width, int height, int strip, Function&& f) {
    const int first = strip * kStripColumns;
    const int last = std::min(width, first + kStripColumns);
    for (int y = 0; y < height; ++y) {
        for (int x = first; x < last; ++x) f(x, y);
    }
}

/// Calls f(x, y) for all pixels, row by row within strips of a few columns: both sides then walk memory that the cache still has.
template <class Function>
void forEachInStrips(int width, int height, Function&& f) {
    for (int strip = 0; strip * kStripColumns < width; ++strip) forEachInStrip(width, height, strip, f);
}

/// The same on all cores, for large pictures. `f` must not throw.
template <class Function>
void forEachOnAllCores(int width, int height, Function&& f) {
    constexpr int leastPixels = 1 << 16;  // of a thread
    const int least = 1 + leastPixels / (kStripColumns * std::max(height, 1));
    parallelRows((width + kStripColumns - 1) / kStripColumns, [&](int strip) { forEachInStrip(width, height, strip, f); }, least);
}

}  // namespace nemra::core
