#include "nodes/generator.h"

#include "nodes/child_accessors.h"
#include "nodes/value_bridge.h"

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

void bindParametersAndChildren(const GeneratedClass& target) {
    const Node dummy(target.family, target.type, "dummy");  // stays the engine's, like any node made by a class
    if (!dummy.handle) return;
    for (nemra_parameter* parameter : dummy.parameters()) bindParameter(target, parameter, "");
    for (const Node& child : dummy.children()) {
        if (!child.handle) continue;
        bindChildGetter(target, child);
        bindChildSetter(target, child);
    }
}

void bindParameter(const GeneratedClass& target, nemra_parameter* parameter, std::string mode) {
    const ParameterNames names{std::string(nemraParameter_name(parameter))};
    const std::int32_t type = nemraParameter_type(parameter);
    bindValueAccessors(target, names, mode, type);
    if (type != NEMRA_PARAMETER_CHOICE) return;
    for (std::uint32_t choice = 0; choice < nemraParameter_choicesSize(parameter); ++choice) {
        std::vector<nemra_parameter*> nested;
        for (std::uint32_t i = 0; i < nemraParameter_choiceParametersSize(parameter, choice); ++i) {
            nested.push_back(nemraParameter_choiceParameter(parameter, choice, i));
        }
        if (!nested.empty() && mode.empty()) mode = names.raw;
        for (nemra_parameter* inner : nested) bindParameter(target, inner, mode);
    }
}

}  // namespace NemraNode::nodes
