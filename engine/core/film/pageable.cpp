#include "engine/core/film/pageable.h"

#include "engine/core/film/arrays.h"

namespace nemra::core {

void makePageable(Film& film) {
    const auto pixels = static_cast<std::size_t>(film.width) * static_cast<std::size_t>(film.height);
    if (arrayBytes(pixels, film.channels.size()) < kLeastPageable) return;
    visitArrays([](Per, auto& array) { array = std::remove_reference_t<decltype(array)>(PagedAllocator<char>(true)); }, film);
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
