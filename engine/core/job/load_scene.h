/// From a scene's bytes to a scene made ready for rendering.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "engine/core/job/settings.h"
#include "engine/core/render.h"

namespace nemra::core {

/// Null after one error message. `path` is absolute.
std::shared_ptr<const PreparedScene> loadSceneFile(const std::string& path, const Settings& settings);
std::shared_ptr<const PreparedScene> loadSceneBytes(std::span<const char> bytes, const Settings& settings);

}  // namespace nemra::core
