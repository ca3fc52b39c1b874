/// The container of everything that is to be rendered.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "module/binding.h"
#include "module/handle.h"
#include "nodes/node.h"
#include "scene/cone.h"
#include "scene/instance.h"
#include "scene/mesh.h"
#include "scene/sphere.h"

namespace NemraNode {

/// Encodings of a scene; the numbers are the engine's. Text is the one with the value 0, the others are bytes.
enum nemraScene_format : int { SVXML = 0, SVBIN = 1, SVXMLZ = 2, SVBINZ = 3 };

/// Paths of layer names, each from the top of the layer tree down to the layer.
using LayerPaths = std::vector<std::vector<std::string>>;

/// Wrapper of an engine scene, which stays the engine's. The scene holds copies of what is added; what add() and the getters
/// return are borrowed wrappers of what is inside, with no tie to this object.
class Scene : public Nemra::CHandler<nemra_scene_t> {
public:
    explicit Scene(const std::string& name) : CHandler(nemraScene_create(name.c_str())) {}

    std::string name() const { return nemraScene_name(handle); }
    void setName(const std::string& name) const { nemraScene_setName(handle, name.c_str()); }
    void addSearchPath(const std::string& path) const { nemraScene_addSearchPath(handle, path.c_str()); }
    bool setActiveSetup(const std::string& name) const { return nemraScene_setActiveSetupName(handle, name.c_str()); }
    std::string getActiveSetup() const { return nemraScene_getActiveSetupName(handle); }
    bool addImport(const std::string& path, bool load, int flags, const std::string& prefix) const {
        return nemraScene_addImport(handle, path.c_str(), load, flags, prefix.c_str());
    }

    // ---- Adding. keepOriginal false gives the source's engine object away: its wrapper then reads as deleted. ----
    nodes::Node add(nodes::Node& node, bool keepOriginal) const;
    /// Null if the source's type text is none of the three, as a deleted geometry's is.
    std::shared_ptr<Geometry> add(Geometry& geometry, bool keepOriginal) const;
    /// Number of the scene's instance, good for remove.
    std::uint64_t add(Instance& instance, const LayerPaths& layers, bool keepOriginal) const;

    // ---- Removing. Wrappers obtained earlier keep their stale handles. ----
    bool remove(const nodes::Node& node) const { return nemraScene_removeNode(handle, node.handle); }
    bool remove(const Geometry& geometry) const { return nemraScene_removeGeom(handle, geometry.handle); }
    bool remove(const Instance& instance) const { return nemraScene_removeInstance(handle, instance.handle); }
    void remove(std::uint64_t number) const { nemraScene_remove(handle, number); }
    void clearGeometry() const { nemraScene_clearGeometry(handle); }
    void clearNodes() const { nemraScene_clearNodes(handle); }
    void clearInstances() const { nemraScene_clearInstances(handle); }
    void clear() const { nemraScene_clear(handle); }

    // ---- What is inside, in the engine's order ----
    std::vector<nodes::Node> getNodes() const;
    /// An empty text is a filter that isn't wanted.
    std::vector<nodes::Node> findNodes(const std::string& className, const std::string& typeName, const std::string& name) const;
    std::vector<Instance> getInstances() const;
    /// Entries of an unknown type are left out.
    std::vector<std::shared_ptr<Geometry>> getGeometries() const;
    std::vector<std::shared_ptr<Mesh>> getMeshes() const;
    std::vector<std::shared_ptr<Sphere>> getSpheres() const;
    std::vector<std::shared_ptr<Cone>> getCones() const;

    // ---- Persistence (scene_persistence.cpp) ----
    /// These two pin the process's numeric locale before the engine reads.
    bool read(const std::string& path) const;
    bool readBytes(const py::bytes& data) const;
    /// A text file takes SVXML, a binary one the others; a mismatch raises the binding library's type_error.
    void write(const py::object& file, nemraScene_format format) const;
    py::str print() const;
};

/// What add() of a geometry returns to Python: declared as the wanted class, made by the type that the engine told.
template <class Declared>
struct AddedGeometry {
    std::shared_ptr<Geometry> geometry;
};

}  // namespace NemraNode

namespace pybind11::detail {

template <class Declared>
struct type_caster<NemraNode::AddedGeometry<Declared>> {
    static constexpr auto name = make_caster<Declared>::name;
    static handle cast(const NemraNode::AddedGeometry<Declared>& added, return_value_policy policy, handle parent) {
        return make_caster<std::shared_ptr<NemraNode::Geometry>>::cast(added.geometry, policy, parent);
    }
};

}  // namespace pybind11::detail
