#include "engine/node/scene.h"

#include <algorithm>

namespace nemra::node {

std::shared_ptr<Node> Scene::findNode(std::string_view family, std::string_view nodeName) const {
    const auto found = std::find_if(nodes.begin(), nodes.end(),
                                    [&](const auto& node) { return node->name() == nodeName && node->family() == family; });
    return found == nodes.end() ? nullptr : *found;
}

std::shared_ptr<Geometry> Scene::findGeometry(std::string_view geometryName) const {
    const auto found = std::find_if(geometries.begin(), geometries.end(), [&](const auto& g) { return g->name == geometryName; });
    return found == geometries.end() ? nullptr : *found;
}

}  // namespace nemra::node
