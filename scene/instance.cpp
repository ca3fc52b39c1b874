#include "scene/instance.h"

#include <algorithm>
#include <sstream>

#include "module/binders.h"
#include "module/bound_class.h"
#include "module/buffer_order.h"
#include "module/engine_text.h"
#include "module/owned_array.h"
#include "scene/array_shape.h"

namespace NemraNode {

namespace {

constexpr std::size_t kMatrixSize = 16;

}  // namespace

Instance Instance::copy() const {
    if (!handle) return Instance();
    Instance duplicate(nemraInstance_copy(handle));
    duplicate.takeOwnership();
    return duplicate;
}

std::string Instance::repr() const {
    if (!handle) return "This Instance has been deleted. You should considerer calling \"del\" on it.";
    std::ostringstream text;
    text << "<nemraInstance_ptr: " << reinterpret_cast<std::uintptr_t>(handle) << " geometry: " << geometryName() << ">";
    return text.str();
}

std::string Instance::serialize(Nemra::SerialFormat format) const {
    if (!handle) return deletedText();
    std::int32_t size = 0;
    char* const text = nemraInstance_serialize(handle, static_cast<std::int32_t>(format), &size);
    return Nemra::takeText(text, std::max(size, 0));
}

py::array_t<double> Instance::getTransform() const {
    std::vector<double> matrix(kMatrixSize, 0.0);
    // A stale handle has no matrix either.
    if (const double* const values = handle ? nemraInstance_getTransform(handle) : nullptr)
        std::copy_n(values, kMatrixSize, matrix.begin());
    return Nemra::ownedArray(std::move(matrix), {4, 4});
}

bool Instance::setTransform(const py::array_t<double>& matrix) const {
    if (!hasShape(matrix, 4, 4)) return false;
    const std::vector<double> values = Nemra::inBufferOrder(matrix, kMatrixSize);
    if (handle) nemraInstance_setTransform(handle, values.data());
    return true;
}

void Instance::setGeometryName(const std::string& name) const {
    if (handle) nemraInstance_setGeometryName(handle, name.c_str());
}

std::string Instance::geometryName() const { return handle ? nemraInstance_geometryName(handle) : deletedText(); }

nodes::Node Instance::material() const { return nodes::Node(handle ? nemraInstance_material(handle) : nullptr); }

void Instance::setMaterial(nodes::Node& material, bool fallback, bool keepOriginal) const {
    if (handle) nemraInstance_setMaterial(handle, &material.handle, fallback, keepOriginal);
}

void bindInstance(py::module_& nodes, std::string) {
    using Handler = Nemra::CHandler<nemra_instance_t>;
    py::class_<Handler, std::shared_ptr<Handler>>(nodes, "CInstanceHandler");
    Nemra::BoundClass<Instance, Handler, std::shared_ptr<Instance>>(nodes, "Instance")
        .def(py::init([] { return std::make_shared<Instance>(nemraInstance_create()); }))
        .def("copy", &Instance::copy,
             " Copy an instance\n            \n            .. note:: \n\n"
             "                The underlying material (if any) is shared with the original\n\n        ")
        .def("getPtr", &Instance::lowBits, "Get pointer to data as an integer")
        .def("__repr__", &Instance::repr)
        .def(
            "print", [](const Instance& instance) { return instance.serialize(Nemra::SerialFormat::svxml); },
            "Return the instance as an svxml string")
        .def(
            "write",
            [](const Instance& instance, const py::object& file) {
                Nemra::dump(file, [&](Nemra::SerialFormat format) { return instance.serialize(format); });
            },
            py::arg("file"), "Write data to a python file object")
        .def("getTransform", &Instance::getTransform,
             "Retrieve the 4x4 transformation matrix (which defined the translation, orientation and scale of the geometry)")
        .def("setTransform", &Instance::setTransform, "Set the 4x4 transformation matrix")
        .def("setGeometryName", &Instance::setGeometryName, "Set the geometry used by its name")
        .def("geometryName", &Instance::geometryName, "Retrieve the geometry name")
        .def("material", &Instance::material, "Get the material used by this instance")
        .def("setMaterial", &Instance::setMaterial, py::arg("mat"), py::arg("fallback") = false, py::arg("keepOriginal") = true,
             "Set the material used by this instance.");
}

}  // namespace NemraNode
