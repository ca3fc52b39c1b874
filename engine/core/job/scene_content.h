/// All that a render reads, as bytes.
#pragma once

#include <memory>
#include <vector>

#include "engine/common/buffer.h"
#include "engine/node/scene.h"

namespace nemra::core {

/// What the samples of a render depend on, and what a render worker needs for them: whatever files it came from, it is in here,
/// and nothing of a library but what the scene uses. A node class that reads a file while a scene is prepared has to add what it
/// read, as workers and later sessions of the same render know of no other content.
struct SceneContent {
    Buffer scene;    ///< svbin
    Buffer library;  ///< svbin of a scene that has only the nodes taken from libraries, in the order in which they were asked for
};

/// Of a scene whose imports are loaded, and the nodes that its preparation took from libraries. Throws std::length_error for
/// nodes nested deeper than readers bear.
SceneContent contentOf(const node::Scene& scene, const std::vector<std::shared_ptr<const node::Node>>& fromLibraries);

}  // namespace nemra::core
