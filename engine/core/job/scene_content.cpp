#include "engine/core/job/scene_content.h"

#include "engine/node/svbin/svbin.h"

namespace nemra::core {

SceneContent contentOf(const node::Scene& scene, const std::vector<std::shared_ptr<const node::Node>>& fromLibraries) {
    node::Scene library;
    library.nodes.reserve(fromLibraries.size());
    for (const auto& node : fromLibraries) library.nodes.push_back(node->copy());
    return {node::writeSvbin(scene), node::writeSvbin(library)};
}

}  // namespace nemra::core
