#include "engine/core/translate/node_paths.h"

#include <utility>
#include <vector>

namespace nemra::core {

NodePaths::NodePaths(const node::Scene& scene) {
    for (const auto& node : scene.nodes) {
        if (node) add(node, node->label());
    }
    for (const auto& geometry : scene.geometries) {
        if (geometry && geometry->material) add(geometry->material, "geometry " + geometry->name + "/material");
    }
    for (const auto& instance : scene.instances) {
        if (instance && instance->material) add(instance->material, "instance of " + instance->geometryName + "/material");
    }
}

void NodePaths::add(const std::shared_ptr<const node::Node>& root, std::string name) {
    if (!places_.emplace(root.get(), Place{nullptr, std::move(name)}).second) return;
    std::vector<std::shared_ptr<const node::Node>> open{root};  // not recursive: trees may be deep
    while (!open.empty()) {
        const auto node = std::move(open.back());
        open.pop_back();
        for (const node::ChildSpec& slot : node->nodeClass().children) {
            if (node->isDefaultChild(slot.name)) continue;
            auto child = node->child(slot.name);
            if (places_.emplace(child.get(), Place{node.get(), slot.name}).second) open.push_back(std::move(child));
        }
        for (auto& item : node->list()) {
            if (places_.emplace(item.get(), Place{node.get(), item->name()}).second) open.push_back(std::move(item));
        }
    }
}

std::string NodePaths::of(const node::Node& node) const {
    auto place = places_.find(&node);
    if (place == places_.end()) return node.label();
    std::string path = place->second.name;
    if (path != node.label()) path += " (" + node.family() + "/" + node.type() + ")";
    while (place->second.parent) {
        place = places_.find(place->second.parent);
        path.insert(0, place->second.name + "/");
    }
    return path;
}

}  // namespace nemra::core
