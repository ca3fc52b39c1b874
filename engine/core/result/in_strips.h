/// Walking pixels where one side is kept by columns and the other by rows.
#pragma once

#include <algorithm>

namespace nemra::core {

/// Calls f(x, y) for all pixels, row by row within strips of a few columns: both sides then walk memory that the cache still has.
template <class Function>
void forEachInStrips(int width, int height, Function&& f) {
    constexpr int strip = 16;  // columns: the 64 bytes of a cache line hold as many floats of a row
    for (int first = 0; first < width; first += strip) {
        const int last = std::min(width, first + strip);
        for (int y = 0; y < height; ++y) {
            for (int x = first; x < last; ++x) f(x, y);
        }
    }
}

}  // namespace nemra::core
