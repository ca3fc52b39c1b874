#include "engine/node/encoding/material_names.h"

#include <string_view>

namespace nemra::node {

MaterialNames::MaterialNames(const Scene& scene) {
    std::unordered_set<std::string_view> seen;
    for (const auto& node : scene.nodes) {
        if (node->family() != "material" || node->name().empty()) continue;  // nobody can refer to what has no name
        if (seen.insert(node->name()).second) found_.insert(node.get());
    }
}

const std::string& MaterialNames::nameOf(const std::shared_ptr<Node>& material, const std::string& name) const {
    static const auto* const none = new std::string;
    if (!material) return name;
    return found_.contains(material.get()) ? material->name() : *none;
}

const Node* MaterialNames::ownOf(const std::shared_ptr<Node>& material) const {
    return found_.contains(material.get()) ? nullptr : material.get();
}

}  // namespace nemra::node
