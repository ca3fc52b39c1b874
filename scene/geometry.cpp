#include "scene/geometry.h"

#include <algorithm>
#include <sstream>

#include "module/binders.h"
#include "module/bound_class.h"
#include "module/engine_text.h"

namespace NemraNode {

std::string Geometry::repr() const {
    if (!handle) return "This geometry has been deleted. You should considerer calling \"del\" on it.";
    std::ostringstream text;
    text << "<nemrageometry_ptr: " << reinterpret_cast<std::uintptr_t>(handle) << " name: " << name() << " type: " << typeName()
         << " primitives: " << numPrimitives() << ">";
    return text.str();
}

std::string Geometry::serialize(Nemra::SerialFormat format) const {
    if (!handle) return deletedText();
    std::int32_t size = 0;
    char* const text = nemraGeometry_serialize(handle, static_cast<std::int32_t>(format), &size);
    return Nemra::takeText(text, std::max(size, 0));
}

std::string Geometry::typeName() const { return handle ? nemraGeometry_getType(handle) : deletedText(); }

void Geometry::setMaterialName(const std::string& name) const {
    if (handle) nemraGeometry_setMaterialName(handle, name.c_str());
}

void Geometry::setMaterial(const nodes::Node& material) const {
    if (handle && material.handle) nemraGeometry_setMaterial(handle, material.handle);
}

std::string Geometry::getMaterialName() const {
    return handle ? Nemra::takeText(nemraGeometry_getMaterialName(handle)) : deletedText();
}

nodes::Node Geometry::getMaterial() const { return nodes::Node(nemraGeometry_getMaterial(handle)); }

void Geometry::setName(const std::string& name) const {
    if (handle) nemraGeometry_setName(handle, name.c_str());
}

std::string Geometry::name() const { return handle ? nemraGeometry_name(handle) : deletedText(); }

int Geometry::numPrimitives() const { return handle ? nemraGeometry_numPrimitives(handle) : 0; }

namespace {

/// Trampoline of the abstract class; there is nothing in it for scripts to override.
class pyGeometry : public Geometry {
public:
    void concrete() override {}
};

}  // namespace

void bindGeometry(py::module_& geometries) {
    using Handler = Nemra::CHandler<nemra_geom_t>;
    py::class_<Handler, std::shared_ptr<Handler>>(geometries, "CGeomHandler");
    Nemra::BoundClass<Geometry, Handler, pyGeometry, std::shared_ptr<Geometry>>(geometries, "Geometry")
        .def("getPtr", &Geometry::lowBits, "Get pointer to data as an integer")
        .def("__repr__", &Geometry::repr)
        .def(
            "print", [](const Geometry& geometry) { return geometry.serialize(Nemra::SerialFormat::svxml); },
            "Return the node as an svxml string")
        .def(
            "write",
            [](const Geometry& geometry, const py::object& file) {
                Nemra::dump(file, [&](Nemra::SerialFormat format) { return geometry.serialize(format); });
            },
            py::arg("file"), "Write data to a python file object")
        .def("typeName", &Geometry::typeName, "Get the geometry type 'mesh', 'sphere' or 'cone'")
        .def("setMaterial", &Geometry::setMaterialName, "Associate a material named 'name' to this mesh")
        .def("setMaterial", &Geometry::setMaterial, "Associate a material to this mesh")
        .def("getMaterialName", &Geometry::getMaterialName, "Retrieve the associated material name")
        .def("getMaterial", &Geometry::getMaterial, "Retrieve the associated material")
        .def("setName", &Geometry::setName, "Set the geometry name")
        .def("name", &Geometry::name, "Retrieve the geometry name")
        .def("numPrimitives", &Geometry::numPrimitives, "Retrieve the number of primitives");
}

void bindGeometries(py::module_& geometries, std::string) {
    bindGeometry(geometries);
    bindMesh(geometries);
    bindSphere(geometries);
    bindCone(geometries);
}

}  // namespace NemraNode
