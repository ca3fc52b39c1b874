/// The sums of a part of an image as bytes, from a worker to its client.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "engine/core/film/film.h"

namespace nemra::core::worker {

/// The film's arrays one behind the other, `arrayBytes` in all. Both ends are of one version, so nothing says which is which.
std::string cutOutBytes(const Film& film);
/// Into a film of the size and channels that the bytes were made of. False if they don't fit, or are no sums of at most that many
/// samples in each pixel; the film is then of no use.
bool readCutOut(std::span<const char> bytes, std::uint32_t samples, Film& film);

}  // namespace nemra::core::worker
