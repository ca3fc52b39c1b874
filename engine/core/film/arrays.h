/// The arrays of a film, named once: whoever copies, sizes, places or sends a film goes through them here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/core/film/film.h"

namespace nemra::core {

/// What an array has one number for: a pixel, or a pixel and channel.
enum class Per { cell, pixel };

/// Calls visit(Per, array of each film...) for the arrays whose numbers are added one by one where films merge.
template <class Visit, class... AnyFilm>
void visitSums(Visit&& visit, AnyFilm&... films) {
    visit(Per::cell, films.high...);
    visit(Per::cell, films.low...);
    visit(Per::pixel, films.depth...);
    visit(Per::pixel, films.samples...);
    visit(Per::pixel, films.depthSamples...);
}

/// The same for all arrays: those of the sums of squares besides, of which three together are a number.
template <class Visit, class... AnyFilm>
void visitArrays(Visit&& visit, AnyFilm&... films) {
    visitSums(visit, films...);
    visit(Per::pixel, films.squares.upper...);
    visit(Per::pixel, films.squares.lower...);
    visit(Per::pixel, films.squares.part...);
}

/// What the arrays of a film of that size take.
inline std::uint64_t arrayBytes(std::uint64_t pixels, std::uint64_t channels) {
    std::uint64_t bytes = 0;
    const Film none;
    visitArrays([&](Per per, const auto& array) { bytes += pixels * (per == Per::cell ? channels : 1) * sizeof(array[0]); },
                none);
    return bytes;
}

/// Makes the arrays that the film's size and channels ask for, all 0. Touches no page of a new block (see PagedAllocator).
inline void makeArrays(Film& film) {
    const std::size_t pixels = static_cast<std::size_t>(film.width) * static_cast<std::size_t>(film.height);
    const std::size_t cells = pixels * film.channels.size();
    const auto make = [&](Per per, auto& array) {
        array.clear();
        array.resize(per == Per::cell ? cells : pixels);
    };
    visitArrays(make, film);
}

/// Whether the arrays are as long as size and channels ask for.
inline bool arraysFit(const Film& film) noexcept {
    const std::size_t pixels = static_cast<std::size_t>(film.width) * static_cast<std::size_t>(film.height);
    const std::size_t cells = pixels * film.channels.size();
    bool fit = true;
    visitArrays([&](Per per, const auto& array) { fit = fit && array.size() == (per == Per::cell ? cells : pixels); }, film);
    return fit;
}

}  // namespace nemra::core
