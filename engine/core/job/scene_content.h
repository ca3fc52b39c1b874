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
    Buffer scene;    ///< svbin, with what the scene imports
    Buffer library;  ///< svbin of a scene that has only the nodes taken from libraries, in the order in which they were asked for
};

/// SceneContent::library from the nodes that the preparation of the scene took. Throws std::length_error for nodes nested deeper
/// than readers bear.
Buffer libraryContent(const std::vector<std::shared_ptr<const node::Node>>& nodes);

}  // namespace nemra::core
