/// Between nodes and the handles by which callers know them. A node has one handle however often it is asked for.
#pragma once

#include <memory>

#include "engine/node/node.h"
#include "module/flat/nemra_types.h"

namespace nemra::node {

/// Who keeps a node alive besides those who share it inside the engine.
enum class Hold {
    none,    ///< nobody: the handle goes stale with the node; for what belongs to a parent or a scene
    script,  ///< the caller, until it releases the handle; a node made by the caller
    passing  ///< the caller, until it releases the handle or gives the node to a parent; a clone or a copy
};

/// The node of a handle, or null for a null, stale or foreign one.
NEMRA_API std::shared_ptr<Node> findNode(const nemra_onode_t* handle) noexcept;
/// The node's handle, made if it has none yet; null for a null node. A hold that the node has already is kept.
NEMRA_API nemra_onode_t* handleOf(const std::shared_ptr<Node>& node, Hold hold = Hold::none);
/// Ends the caller's hold and clears the field. The handle stays good for as long as the engine itself keeps the node.
NEMRA_API void releaseHandle(nemra_onode_t** handle);
/// What happens to a hold when the node gets a parent: a passing one ends, another stays.
NEMRA_API void passToParent(nemra_onode_t* handle);

}  // namespace nemra::node
