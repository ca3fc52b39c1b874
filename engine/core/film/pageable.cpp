#include "engine/core/film/pageable.h"

namespace nemra::core {

void makePageable(Film& film) {
    constexpr std::size_t perCell = 2 * sizeof(double);
    constexpr std::size_t perPixel = 3 * sizeof(double) + 2 * sizeof(std::uint32_t) + 1;
    const auto pixels = static_cast<std::size_t>(film.width) * static_cast<std::size_t>(film.height);
    if (pixels * (perCell * film.channels.size() + perPixel) < kLeastPageable) return;
    const auto place = [](auto& array) { array = std::remove_reference_t<decltype(array)>(PagedAllocator<char>(true)); };
    place(film.high);
    place(film.low);
    place(film.samples);
    place(film.squares.upper);
    place(film.squares.lower);
    place(film.squares.part);
    place(film.depth);
    place(film.depthSamples);
}

bool isPageable(const Film& film) noexcept { return film.samples.get_allocator().paged; }

std::shared_ptr<const Film> pageable(std::shared_ptr<const Film> film) {
    if (isPageable(*film)) return film;
    auto copy = std::make_shared<Film>();
    copy->width = film->width;
    copy->height = film->height;
    copy->channels = film->channels;
    makePageable(*copy);
    if (!isPageable(*copy)) return film;
    *copy = *film;  // the arrays stay where they are placed
    return copy;
}

}  // namespace nemra::core
