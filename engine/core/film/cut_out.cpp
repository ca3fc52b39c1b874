#include "engine/core/film/cut_out.h"

#include <algorithm>
#include <cstddef>

#include "engine/core/film/arrays.h"

namespace nemra::core {

namespace {

/// A run of pixels of one column, as they lie one after the other in both films.
struct Run {
    std::size_t from;
    std::size_t to;
    std::size_t count;

    /// What a run of pixels is in an array of that kind.
    Run of(Per per, std::size_t channels) const noexcept {
        const std::size_t times = per == Per::cell ? channels : 1;
        return {from * times, to * times, count * times};
    }
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
        visitSums([&](Per per, const auto& from, auto& to) { add(from, to, run.of(per, channels)); }, part, whole);
        for (std::size_t i = 0; i < run.count; ++i) {
            SquareSum sum = whole.squares.at(run.to + i);
            add(sum, part.squares.at(run.from + i));
            whole.squares.put(run.to + i, sum);
        }
    }
}

void copyPixels(const Film& from, Film& to, int x0, int y0, int x1, int y1) {
    const std::size_t channels = from.channels.size();
    for (int x = x0; x < x1; ++x) {
        const std::size_t pixel = from.pixel(x - from.left, y0 - from.top);
        const Run run{pixel, pixel, static_cast<std::size_t>(y1 - y0)};
        visitArrays([&](Per per, const auto& source, auto& target) { copy(source, target, run.of(per, channels)); }, from, to);
    }
}

}  // namespace nemra::core
