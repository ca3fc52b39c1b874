/// Telling scenes apart by a number.
#pragma once

#include <cstdint>
#include <string>

#include "engine/core/job/scene_content.h"

namespace nemra::core {

/// Of all that the samples of a render depend on: what it reads, the setup and the version of the engine. Never 0. Two renders
/// have the same one by chance once in 2^64 times.
std::uint64_t fingerprintOf(const SceneContent& content, const std::string& setup);

}  // namespace nemra::core
