/// The binders: each defines one class or group of the Python interface in the module that it is given.
/// `packageName` is the Python package in which the module is installed; binders whose docstrings name the package splice it in.
#pragma once

#include <string>

#include "module/binding.h"

namespace Nemra {

void bindGlobals(py::module_& module, const std::string& packageName);
void bindRaw(py::module_& module, const std::string& packageName);
void bindServer(py::module_& module, const std::string& packageName);
void bindRenderer(py::module_& module, const std::string& packageName);

}  // namespace Nemra

/// The binders of the families stand in nodes/catalogue.h: NemraNode::nodes::<family>::bindFamily.
namespace NemraNode {

/// `Node` and its base, in `nodes`.
void bindNode(py::module_& nodes, std::string packageName);
/// `Geometry`, `Mesh`, `Sphere` and `Cone`, in `nodes.geometries`.
void bindGeometries(py::module_& geometries, std::string packageName);
/// `Instance`, in `nodes`.
void bindInstance(py::module_& nodes, std::string packageName);
/// `Scene`, in `nodes`.
void bindScene(py::module_& nodes, std::string packageName);

}  // namespace NemraNode
