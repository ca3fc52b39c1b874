/// Generation of a node class's methods from the engine's answers about a throw-away node of that class.
#pragma once

#include <string>

#include "nodes/generated_class.h"
#include "nodes/node.h"

namespace NemraNode::nodes {

/// Creates the submodule of a family and sets it as attribute of `nodes`.
py::module_ makeFamilyModule(py::module_& nodes, const char* family);

/// Defines the accessors of all parameters, then of all children. A class that the engine doesn't know gets none.
void bindParametersAndChildren(const GeneratedClass& target);

/// Defines the methods of one parameter and, under a choice, of all that its options bring. `mode` is the raw name of the
/// outermost enclosing choice, empty at the top.
void bindParameter(const GeneratedClass& target, nemra_parameter* parameter, std::string mode);

}  // namespace NemraNode::nodes
