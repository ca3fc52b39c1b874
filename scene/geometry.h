/// Geometries of a scene: the abstract base that meshes, spheres and cones share.
#pragma once

#include <string>

#include "module/binding.h"
#include "module/handle.h"
#include "module/python_file.h"
#include "nodes/node.h"

namespace NemraNode {

/// Wrapper of an engine geometry, which stays the engine's whatever made it. A null handle means that the geometry was deleted:
/// texts then answer deletedText(), setters do nothing.
class Geometry : public Nemra::CHandler<nemra_geom_t> {
public:
    virtual ~Geometry() = default;
    /// Makes this class abstract; nothing calls it.
    virtual void concrete() = 0;

    static const char* deletedText() { return "This geometry was deleted"; }

    std::string repr() const;
    /// svxml text or svbin bytes.
    std::string serialize(Nemra::SerialFormat format) const;
    /// "mesh", "sphere" or "cone". The engine keeps the text.
    std::string typeName() const;
    void setMaterialName(const std::string& name) const;
    void setMaterial(const nodes::Node& material) const;
    std::string getMaterialName() const;
    /// The engine is asked also for a deleted geometry.
    nodes::Node getMaterial() const;
    void setName(const std::string& name) const;
    std::string name() const;
    int numPrimitives() const;

protected:
    Geometry() = default;
    explicit Geometry(nemra_geom_t* engineHandle) : CHandler(engineHandle) {}
    Geometry(const Geometry&) = default;
};

/// Parts of bindGeometries, in this order: each needs the one before.
void bindGeometry(py::module_& geometries);
void bindMesh(py::module_& geometries);
void bindSphere(py::module_& geometries);
void bindCone(py::module_& geometries);

}  // namespace NemraNode
