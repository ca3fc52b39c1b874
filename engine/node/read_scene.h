/// Reading a scene from any of its encodings, told from the bytes.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "engine/node/encoding/gzip.h"
#include "engine/node/encoding/report.h"
#include "engine/node/scene.h"

namespace nemra::node {

/// Reads a scene into `scene`, which is left as it was on failure. `origin` names the source in messages: a file name, or
/// "buffer". On success the scene is what was read and nothing else. Unknown elements and attributes are skipped with a warning
/// that says their place, so that later versions can add some; so are parameters without effect under the choices made.
/// Unknown classes, parameters, slots and columns would change the light without anybody noticing: as `unknown` says, they are
/// refused or skipped with a warning each. What is broken (no scene, damaged mesh, numbers that aren't) gives one error message
/// with file, place and node, and false.
NEMRA_API bool readScene(std::span<const char> bytes, std::string_view origin, Scene& scene, Unknown unknown = Unknown::refuse,
                         Length length = Length::claimed);
/// The same from a file; a relative path counts from workdir(). A missing or unreadable file gives one error message and false.
NEMRA_API bool readSceneFile(const std::string& path, Scene& scene, Unknown unknown = Unknown::refuse);

/// Whether the bytes begin as one of the encodings does, gzipped or not.
NEMRA_API bool looksLikeScene(std::span<const char> bytes);

}  // namespace nemra::node
