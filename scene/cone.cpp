#include "scene/cone.h"

#include "module/bound_class.h"

namespace NemraNode {

void bindCone(py::module_& geometries) {
    Nemra::BoundClass<Cone, Geometry, std::shared_ptr<Cone>>(geometries, "Cone")
        .def(py::init<const std::string&, float, bool>())
        .def(py::init([](const std::string& name, float rtop) { return std::make_shared<Cone>(name, rtop, false); }))
        .def("setRtop", &Cone::setRtop)
        .def("getRtop", &Cone::getRtop);
}

}  // namespace NemraNode
