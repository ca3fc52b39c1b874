/// Accessors of a node's raw data: named, typed slots outside the parameters.
#pragma once

#include "nodes/generated_class.h"

namespace NemraNode::nodes {

/// Defines setRaw<Name> and getRaw<Name> for each slot that the engine tells of a throw-away node of the class.
void bindRawData(const GeneratedClass& target);

}  // namespace NemraNode::nodes
