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
    std::shared_ptr<const Buffer> parcel;           ///< for render workers (worker/scene_parcel.h), if it was wanted
    std::uint64_t fingerprint = 0;                  ///< for renders with "resume" (fingerprint.h)
};

/// `path` is absolute.
LoadedScene loadSceneFile(const std::string& path, const Settings& settings, bool wantsParcel);
LoadedScene loadSceneBytes(std::span<const char> bytes, const Settings& settings, bool wantsParcel);

}  // namespace nemra::core
