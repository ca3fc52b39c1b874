#include "nodes/generator.h"

namespace NemraNode::nodes {

py::module_ makeFamilyModule(py::module_& nodes, const char* family) {
    const char* parent = PyModule_GetName(nodes.ptr());
    if (!parent) throw py::error_already_set();
    const std::string fullName = std::string(parent) + "." + family;
    PyObject* added = PyImport_AddModule(fullName.c_str());
    if (!added) throw py::error_already_set();
    auto module = py::reinterpret_borrow<py::module_>(added);
    if (PyObject_SetAttrString(nodes.ptr(), family, module.ptr()) != 0) throw py::error_already_set();
    return module;
}

}  // namespace NemraNode::nodes
