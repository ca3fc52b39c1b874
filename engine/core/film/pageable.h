/// Films that are kept for long stand where the system can put them on disk.
#pragma once

#include <memory>

#include "engine/core/film/film.h"

namespace nemra::core {

/// Films below this many bytes stay in ordinary memory.
inline constexpr std::size_t kLeastPageable = std::size_t{16} << 20;

/// For a film whose size and channels are set and whose arrays aren't made yet.
void makePageable(Film& film);
bool isPageable(const Film& film) noexcept;
/// The same film if it is small or pageable already, else a copy that is pageable.
std::shared_ptr<const Film> pageable(std::shared_ptr<const Film> film);

}  // namespace nemra::core
