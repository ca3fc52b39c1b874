/// Nodes of any class with everything off its default.
#pragma once

#include <memory>
#include <string>

#include "engine/node/node.h"

namespace nemra::test {

/// So many variants select each option of each choice of the class, nested choices under each option that brings them.
int variantsOf(const node::NodeClass& nodeClass);

/// Every parameter, raw slot, child and list of it has other contents than by default. Children are in odd variants other classes
/// of their family, in even ones the default child, changed.
std::shared_ptr<node::Node> changedNode(const node::NodeClass& nodeClass, const std::string& name, int variant, int levels = 2);

}  // namespace nemra::test
