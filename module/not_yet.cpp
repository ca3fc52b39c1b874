// Binders that later work brings: until then their classes are missing from the module.
#include "module/binders.h"

namespace Nemra {

__attribute__((weak)) void bindRaw(py::module_&, const std::string&) {}
__attribute__((weak)) void bindServer(py::module_&, const std::string&) {}
__attribute__((weak)) void bindRenderer(py::module_&, const std::string&) {}

}  // namespace Nemra

namespace NemraNode {

__attribute__((weak)) void bindGeometries(py::module_&, std::string) {}
__attribute__((weak)) void bindInstance(py::module_&, std::string) {}
__attribute__((weak)) void bindScene(py::module_&, std::string) {}

}  // namespace NemraNode
