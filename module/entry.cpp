// Entry point: version check, module object, the fixed order of the binders, the start of the engine, the clean-up at exit.
#include <cctype>
#include <cstring>

#include "module/binders.h"
#include "module/flat/nemra_global.h"
#include "module/flat/nemra_node.h"
#include "nodes/node_classes.h"

namespace {

/// Package in which the module is installed. Fits the string's own buffer, so that nothing runs to set it up.
constinit std::string kPackageName = "sarvo";

py::module_::module_def moduleDefinition;

/// 3.12.x passes, 3.120 doesn't.
bool isCompatible(const char* runningVersion) {
    constexpr std::string_view compiled = "3.12";
    return std::strncmp(runningVersion, compiled.data(), compiled.size()) == 0 &&
           !std::isdigit(static_cast<unsigned char>(runningVersion[compiled.size()]));
}

/// Empties the global message callback while the interpreter is still able to run; a static destructor would come too late.
void releaseMessageCallbackAtExit() {
    py::module_::import("atexit").attr("register")(
        py::cpp_function([] { py::module_::import("sarvo").attr("nemra").attr("onMessage")(py::none()); }));
}

/// The order is part of the interface: `Node` takes nothing from the engine, the family binders question it.
void fill(py::module_& module) {
    Nemra::bindGlobals(module, kPackageName);
    Nemra::bindRaw(module, kPackageName);
    Nemra::bindServer(module, kPackageName);
    Nemra::bindRenderer(module, kPackageName);

    py::module_ nodes = module.def_submodule("nodes");
    NemraNode::bindNode(nodes, kPackageName);

    nemraGlobalInitialize(false, "");
    nemraNode_register();

#define NEMRA_BIND(Family) NemraNode::nodes::Family::bindFamily(nodes, kPackageName);
    NEMRA_BOUND_FAMILIES(NEMRA_BIND)
#undef NEMRA_BIND

    py::module_ geometries = nodes.def_submodule("geometries");
    NemraNode::bindGeometries(geometries, kPackageName);
    NemraNode::bindInstance(nodes, kPackageName);
    NemraNode::bindScene(nodes, kPackageName);

    releaseMessageCallbackAtExit();
}

PyObject* createModule() {
    try {
        py::detail::get_internals();
        py::module_ module = py::module_::create_extension_module("nemra", nullptr, &moduleDefinition);
        try {
            fill(module);
            return module.ptr();  // the creation's own reference goes to the interpreter, or stays with the types after a failure
        } catch (py::error_already_set& e) {
            py::raise_from(e, PyExc_ImportError, "initialization failed");
        } catch (const std::exception& e) {
            py::set_error(PyExc_ImportError, e.what());
        }
    } catch (py::error_already_set& e) {  // the module object itself: its error goes on as it is
        e.restore();
    } catch (const std::exception& e) {
        py::set_error(PyExc_ImportError, e.what());
    }
    return nullptr;
}

}  // namespace

extern "C" PYBIND11_EXPORT PyObject* PyInit_nemra() {
    if (const char* running = Py_GetVersion(); !isCompatible(running)) {
        PyErr_Format(
            PyExc_ImportError,
            "Python version mismatch: module was compiled for Python %s, but the interpreter version is incompatible: %s.",
            "3.12", running);
        return nullptr;
    }
    return createModule();
}
