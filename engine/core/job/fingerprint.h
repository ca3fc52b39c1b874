/// Telling scenes apart by a number.
#pragma once

#include <cstdint>
#include <string>

#include "engine/node/scene.h"

namespace nemra::core {

/// Of all that the samples of a render depend on: the scene as it was read, with what it imports, the setup and the version of
/// the engine. What libraries hold isn't in it. Never 0. Two scenes have the same one by chance once in 2^64 times.
std::uint64_t fingerprintOf(const node::Scene& scene, const std::string& setup);

}  // namespace nemra::core
