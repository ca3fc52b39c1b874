/// Accessors of a node's fixed children. The setter guards the tree: a child is replaced only by a node of its family.
#pragma once

#include "nodes/generated_class.h"
#include "nodes/node.h"

namespace NemraNode::nodes {

/// Each defines its method unless the class or a base already has an attribute of that name.
void bindChildGetter(const GeneratedClass& target, const Node& child);
void bindChildSetter(const GeneratedClass& target, const Node& child);

}  // namespace NemraNode::nodes
