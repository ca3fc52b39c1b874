/// Docstrings of the node classes: the class name and a frame with the class's page of the reference manual.
#pragma once

#include <string>

namespace NemraNode::nodes {

/// `name` is the Python class name, `path` family and type with a slash between. A class that the manual has no page for gives
/// its bare name.
std::string nodeDocString(const std::string& name, const std::string& path);

}  // namespace NemraNode::nodes
