/// How a material of a geometry or an instance is written.
#pragma once

#include <memory>
#include <string>
#include <unordered_set>

#include "engine/node/scene.h"

namespace nemra::node {

/// Materials that references by name find in a scene are written by their name, others go along in full.
class MaterialNames {
public:
    /// For what is written without a scene around it.
    MaterialNames() = default;
    explicit MaterialNames(const Scene& scene);

    /// The name to write, or "".
    const std::string& nameOf(const std::shared_ptr<Node>& material, const std::string& name) const;
    /// The node to write in full, or null.
    const Node* ownOf(const std::shared_ptr<Node>& material) const;

private:
    std::unordered_set<const Node*> found_;  // materials that are the first of their name
};

}  // namespace nemra::node
