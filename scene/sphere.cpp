#include "scene/sphere.h"

#include "module/bound_class.h"

namespace NemraNode {

void bindSphere(py::module_& geometries) {
    Nemra::BoundClass<Sphere, Geometry, std::shared_ptr<Sphere>>(geometries, "Sphere")
        .def(py::init<const std::string&, float, bool>(), py::arg("name"), py::arg("radius"), py::arg("reverse") = false,
             "Build a Sphere with its name, its radius [m] and reverse which inverse normals if set to true")
        .def("setRadius", &Sphere::setRadius, "Set the sphere radius [m]")
        .def("getRadius", &Sphere::getRadius, "Retrieve the sphere radius [m]");
}

}  // namespace NemraNode
