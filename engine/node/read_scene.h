/// Reading a scene from any of its encodings, told from the bytes.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "engine/node/scene.h"

namespace nemra::node {

/// Reads a scene into `scene`, which is left as it was on failure. `origin` names the source in messages: a file name, or
/// "buffer". What is unknown (elements, classes, parameters) is skipped with a warning that says line and column; what is broken
/// (no scene, damaged mesh, numbers that aren't) gives one error message with file, line and node, and false.
NEMRA_API bool readScene(std::span<const char> bytes, std::string_view origin, Scene& scene);
/// The same from a file. A missing or unreadable file gives one error message and false.
NEMRA_API bool readSceneFile(const std::string& path, Scene& scene);

}  // namespace nemra::node
