/// Where in a scene a node stands, for messages.
#pragma once

#include <string>
#include <unordered_map>

#include "engine/node/scene.h"

namespace nemra::core {

/// Paths of the form "material/generic lamp/emitter/radiance (spectrum/tabulated)": the node of the scene, or the geometry or
/// instance with its own material, the slots from there on, and the class. A node that several others share stands where it is
/// met first.
class NodePaths {
public:
    explicit NodePaths(const node::Scene& scene);

    /// The node's own label if it isn't in the scene: a class's default, or one of a library.
    std::string of(const node::Node& node) const;

private:
    struct Place {
        const node::Node* parent;  ///< null at a root
        std::string name;          ///< slot or list entry; at a root all there is to say
    };
    void add(const std::shared_ptr<const node::Node>& root, std::string name);

    std::unordered_map<const node::Node*, Place> places_;
};

}  // namespace nemra::core
