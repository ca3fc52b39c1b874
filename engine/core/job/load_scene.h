/// From a scene's bytes to a scene made ready for rendering.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "engine/common/buffer.h"
#include "engine/core/job/settings.h"
#include "engine/core/render.h"

namespace nemra::core {

struct LoadedScene {
    std::shared_ptr<const PreparedScene> prepared;  ///< null after one error message
    std::shared_ptr<const Buffer> parcel;           ///< for render workers (worker/scene_parcel.h), else null
    std::uint64_t fingerprint = 0;                  ///< for renders with "resume" (fingerprint.h)
};

/// Where a scene is to be rendered, which says what has to be made of it.
struct RenderPlaces {
    bool here = true;
    bool elsewhere = false;  ///< by render workers
};

/// `path` is absolute.
LoadedScene loadSceneFile(const std::string& path, const Settings& settings, RenderPlaces places);
LoadedScene loadSceneBytes(std::span<const char> bytes, const Settings& settings, RenderPlaces places);

}  // namespace nemra::core
