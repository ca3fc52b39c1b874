/// Parameters between engine and Python. A getter looks its parameter up at each call, since a parameter nested in a choice
/// exists only while that choice is selected; a missing one prints a line and gives a default.
#pragma once

#include <string>

#include "nodes/generated_class.h"
#include "nodes/names.h"
#include "nodes/node.h"

namespace NemraNode::nodes {

/// Defines the methods of a parameter of that type, in order: choices, getter, setter, as far as the type has them.
void bindValueAccessors(const GeneratedClass& target, const ParameterNames& names, const std::string& mode, std::int32_t type);

/// Prints one line on Python's standard output.
void reportMissingParameter(const std::string& name, const std::string& mode);

/// The common end of all setters: the engine takes the value. False for a deleted node, whose value nobody takes.
bool setParameter(const Node& node, const std::string& name, nemra_value* value);

}  // namespace NemraNode::nodes
