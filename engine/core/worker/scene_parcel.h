/// A scene with all that its rendering reads, as one content that can be sent: no file is looked up at the other end.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "engine/common/buffer.h"
#include "engine/core/library/libraries.h"
#include "engine/core/render.h"
#include "engine/node/scene.h"

namespace nemra::core::worker {

/// Of a scene whose imports are loaded, gzipped. Throws std::length_error for more than a reader takes.
Buffer packScene(const node::Scene& scene);
/// The nodes that the scene's preparation took from libraries, which make the parcel whole. Throws as packScene does.
void addLibraryNodes(Buffer& parcel, const std::vector<std::shared_ptr<const node::Node>>& nodes);

/// Names that neither the scene nor the parcel has are looked for in `libraryPaths`. Null after error messages.
std::shared_ptr<const PreparedScene> prepareParcel(std::span<const char> parcel, const std::string& setup,
                                                   const std::vector<std::string>& libraryPaths);

}  // namespace nemra::core::worker
