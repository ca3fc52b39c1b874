/// Placement of a geometry in a scene.
#pragma once

#include <string>

#include "module/binding.h"
#include "module/handle.h"
#include "module/python_file.h"
#include "nodes/node.h"

namespace NemraNode {

/// Wrapper of an engine instance, which names a geometry and holds its transform and, maybe, a material. A null handle means that
/// the instance was deleted: texts then answer deletedText(), setters do nothing.
class Instance : public Nemra::CHandler<nemra_instance_t> {
public:
    Instance() = default;
    explicit Instance(nemra_instance_t* engineHandle) : CHandler(engineHandle) {}

    static const char* deletedText() { return "This instance was deleted"; }

    /// Owned by the result; shares the material. Deleted if this one is.
    Instance copy() const;
    std::string repr() const;
    /// svxml text or svbin bytes.
    std::string serialize(Nemra::SerialFormat format) const;
    /// Shape (4, 4), row-major, translation in the last column; zeros for a deleted instance.
    py::array_t<double> getTransform() const;
    /// False, with a printed line, for another shape than (4, 4). True also for a deleted instance.
    bool setTransform(const py::array_t<double>& matrix) const;
    void setGeometryName(const std::string& name) const;
    std::string geometryName() const;
    nodes::Node material() const;
    /// The engine may take the node and clear its handle. The flag `borrowed` of `material` stays as it is.
    void setMaterial(nodes::Node& material, bool fallback, bool keepOriginal) const;
};

}  // namespace NemraNode
