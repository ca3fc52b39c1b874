/// A node class while its methods are being generated.
#pragma once

#include <typeinfo>

#include "module/binding.h"

namespace NemraNode::nodes {

struct GeneratedClass {
    const char* family;
    const char* type;
    /// The C++ class that `self` of each method must be. It derives from Node, adds nothing and so begins with it.
    const std::type_info* self;
    py::object python;
};

}  // namespace NemraNode::nodes
