#include "engine/core/film/cut_out.h"

#include <algorithm>
#include <cstddef>

namespace nemra::core {

namespace {

/// A run of pixels of one column, as they lie one after the other in both films.
struct Run {
    std::size_t from;
    std::size_t to;
    std::size_t count;

    Run cells(std::size_t channels) const noexcept { return {from * channels, to * channels, count * channels}; }
};

template <class Numbers>
void add(const Numbers& from, Numbers& to, const Run& run) {
    for (std::size_t i = 0; i < run.count; ++i) to[run.to + i] += from[run.from + i];
}

template <class Numbers>
void copy(const Numbers& from, Numbers& to, const Run& run) {
    if (from.empty()) return;
    std::copy_n(from.begin() + static_cast<std::ptrdiff_t>(run.from), run.count,
                to.begin() + static_cast<std::ptrdiff_t>(run.to));
}

}  // namespace

void addCutOut(Film& whole, const Film& part) {
    const std::size_t channels = whole.channels.size();
    for (int x = 0; x < part.width; ++x) {
        const int left = part.left - whole.left;
        const Run run{part.pixel(x, 0), whole.pixel(left + x, part.top - whole.top), static_cast<std::size_t>(part.height)};
        add(part.high, whole.high, run.cells(channels));
        add(part.low, whole.low, run.cells(channels));
        add(part.samples, whole.samples, run);
        for (std::size_t i = 0; i < run.count; ++i) {
            SquareSum sum = whole.squares.at(run.to + i);
            add(sum, part.squares.at(run.from + i));
            whole.squares.put(run.to + i, sum);
        }
        add(part.depth, whole.depth, run);
        add(part.depthSamples, whole.depthSamples, run);
    }
}

void copyPixels(const Film& from, Film& to, int x0, int y0, int x1, int y1) {
    const std::size_t channels = from.channels.size();
    for (int x = x0; x < x1; ++x) {
        const std::size_t pixel = from.pixel(x - from.left, y0 - from.top);
        const Run run{pixel, pixel, static_cast<std::size_t>(y1 - y0)};
        copy(from.high, to.high, run.cells(channels));
        copy(from.low, to.low, run.cells(channels));
        copy(from.samples, to.samples, run);
        copy(from.squares.upper, to.squares.upper, run);
        copy(from.squares.lower, to.squares.lower, run);
        copy(from.squares.part, to.squares.part, run);
        copy(from.depth, to.depth, run);
        copy(from.depthSamples, to.depthSamples, run);
    }
}

}  // namespace nemra::core
