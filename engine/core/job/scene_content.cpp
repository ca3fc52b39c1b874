#include "engine/core/job/scene_content.h"

#include "engine/node/svbin/svbin.h"

namespace nemra::core {

Buffer libraryContent(const std::vector<std::shared_ptr<const node::Node>>& nodes) {
    node::Scene library;
    library.nodes.reserve(nodes.size());
    for (const auto& node : nodes) library.nodes.push_back(node->copy());
    return node::writeSvbin(library);
}

}  // namespace nemra::core
