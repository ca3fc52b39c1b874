/// Table parameters: a dict with one entry per column. Numbers and booleans travel as numpy arrays, texts and bytes as lists.
#pragma once

#include <string>

#include "nodes/node.h"

namespace NemraNode::nodes {

/// The parameter's contents. The type of a column is that of its last cell; a column whose last cell is empty has no entry.
py::dict readTable(nemra_parameter* parameter);

/// Replaces the parameter's contents in one step. False after a printed line for a fault in the data, and for whatever the engine
/// declines; the parameter is then as it was. Only a table at the top level has columns to write.
bool writeTable(const Node& node, const std::string& name, const py::dict& columns);

}  // namespace NemraNode::nodes
