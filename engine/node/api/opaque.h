/// What the opaque pointers of the flat interface point to, and what it keeps with a node.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "engine/common/guarded.h"
#include "engine/node/node.h"
#include "engine/node/node_handle.h"
#include "engine/node/scene_place.h"

struct nemra_color {
    nemra::node::Color color;
};

struct nemra_value {
    nemra::node::Value value;
    std::unique_ptr<nemra_color> color;  ///< made when it is asked for
};

struct nemra_table {
    std::shared_ptr<const nemra::node::Table> contents = std::make_shared<nemra::node::Table>();
    std::shared_ptr<nemra::node::Table> own;  ///< the same, once it was written to

    nemra::node::Table& writable() {
        if (!own) {
            own = std::make_shared<nemra::node::Table>(*contents);
            contents = own;
        }
        return *own;
    }
};

/// Lives with its node; a column of a table has no node.
struct nemra_parameter {
    nemra::node::Node* node = nullptr;
    const nemra::node::ParameterSpec* spec = nullptr;
    std::vector<std::vector<std::unique_ptr<nemra_parameter>>> nested;  ///< per option; made when first asked for
    std::vector<std::unique_ptr<nemra_parameter>> columns;              ///< of a table; made when first asked for
    std::unique_ptr<nemra_table> table;                                 ///< what was handed out last

    nemra_parameter(nemra::node::Node* owner, const nemra::node::ParameterSpec& described) : node(owner), spec(&described) {}
    /// Handles of what the option brings; the option must exist.
    const std::vector<std::unique_ptr<nemra_parameter>>& broughtBy(std::size_t option);
};

namespace nemra::node {

/// Arrays and values that were handed out for a node and stay the engine's; and its place, if it is a scene's.
struct HandedOut final : NodeAttachment {
    std::vector<std::unique_ptr<nemra_parameter>> parameters;
    std::vector<nemra_parameter*> parameterArray;
    std::vector<nemra_onode_t*> children;
    std::vector<nemra_onode_t*> list;
    std::map<std::string, nemra_value, std::less<>> rawData;
    ScenePlace place;

    static HandedOut& of(Node& node) {
        if (!node.attachment()) node.attach(std::make_unique<HandedOut>());
        return static_cast<HandedOut&>(*node.attachment());
    }
};

/// The frame of a function that works on a node: `fallback` for a null, stale or foreign handle, and when the body throws.
template <class Result, class Body>
Result withNode(const char* function, nemra_onode_t* handle, Result fallback, Body&& body) {
    return guarded<Result>(function, fallback, [&]() -> Result {
        const std::shared_ptr<Node> node = findNode(handle);
        return node ? body(*node) : fallback;
    });
}

}  // namespace nemra::node
