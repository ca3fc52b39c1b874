/// A scene with all that its rendering reads, as one content that can be sent: no file is looked up at the other end.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "engine/common/buffer.h"
#include "engine/core/job/scene_content.h"
#include "engine/core/render.h"

namespace nemra::core::worker {

/// The scene's part of a parcel from its svbin (SceneContent::scene), gzipped. Throws std::length_error for more than a reader
/// takes.
Buffer packScene(const Buffer& scene);
/// SceneContent::library, which makes the parcel whole. Throws as packScene does.
void addLibrary(Buffer& parcel, const Buffer& library);

/// Names that neither the scene nor the parcel has are looked for in `libraryPaths`. Null after error messages.
std::shared_ptr<const PreparedScene> prepareParcel(std::span<const char> parcel, const std::string& setup,
                                                   const std::vector<std::string>& libraryPaths);

}  // namespace nemra::core::worker
