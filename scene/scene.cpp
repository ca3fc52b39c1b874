#include "scene/scene.h"

#include "module/engine_text.h"

namespace NemraNode {

namespace {

/// Borrowed wrapper of the class that the type text names, or null.
std::shared_ptr<Geometry> wrapByType(nemra_geom_t* geometry, const std::string& type) {
    if (type == "mesh") return std::make_shared<Mesh>(geometry);
    if (type == "sphere") return std::make_shared<Sphere>(geometry);
    if (type == "cone") return std::make_shared<Cone>(geometry);
    return nullptr;
}

std::string typeOf(nemra_geom_t* geometry) {
    return geometry ? Nemra::takeText(nemraGeometry_getType(geometry)) : Geometry::deletedText();
}

template <class Wrapper, class Handle>
std::vector<Wrapper> wrapAll(Handle** handles, std::uint32_t count) {
    std::vector<Wrapper> wrappers;
    if (!handles) return wrappers;
    wrappers.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) wrappers.emplace_back(handles[i]);
    return wrappers;
}

template <class Shape>
std::vector<std::shared_ptr<Shape>> wrapShapes(nemra_geom_t** handles, std::uint32_t count) {
    std::vector<std::shared_ptr<Shape>> shapes;
    if (!handles) return shapes;
    shapes.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) shapes.push_back(std::make_shared<Shape>(handles[i]));
    return shapes;
}

/// The paths as null-terminated array of null-terminated arrays of texts. The texts stay with `paths`.
class LayerNames {
public:
    explicit LayerNames(const LayerPaths& paths) {
        names_.reserve(paths.size());
        for (const auto& path : paths) {
            auto& names = names_.emplace_back();
            names.reserve(path.size() + 1);
            for (const std::string& name : path) names.push_back(name.c_str());
            names.push_back(nullptr);
        }
        for (auto& names : names_) paths_.push_back(names.data());
        paths_.push_back(nullptr);
    }

    const char*** data() { return paths_.data(); }

private:
    std::vector<std::vector<const char*>> names_;
    std::vector<const char**> paths_;
};

}  // namespace

nodes::Node Scene::add(nodes::Node& node, bool keepOriginal) const {
    if (!keepOriginal) node.borrowed = true;
    return nodes::Node(nemraScene_addNode(handle, &node.handle, keepOriginal));
}

std::shared_ptr<Geometry> Scene::add(Geometry& geometry, bool keepOriginal) const {
    const std::string type = typeOf(geometry.handle);  // asked before the call, which may clear the handle
    if (!keepOriginal) geometry.borrowed = true;
    nemra_geom_t* const added = nemraScene_addGeom(handle, &geometry.handle, keepOriginal);
    return wrapByType(added, type);
}

std::uint64_t Scene::add(Instance& instance, const LayerPaths& layers, bool keepOriginal) const {
    LayerNames layerNames(layers);
    if (!keepOriginal) instance.borrowed = true;
    return nemraScene_addInstance(handle, &instance.handle, layerNames.data(), keepOriginal);
}

std::vector<nodes::Node> Scene::getNodes() const {
    std::uint32_t count = 0;
    nemra_onode_t** const handles = nemraScene_getNodes(handle, &count);
    return wrapAll<nodes::Node>(handles, count);
}

std::vector<nodes::Node> Scene::findNodes(const std::string& className, const std::string& typeName,
                                          const std::string& name) const {
    std::uint32_t count = 0;
    nemra_onode_t** const handles = nemraScene_findNodes(handle, className.c_str(), typeName.c_str(), name.c_str(), &count);
    return wrapAll<nodes::Node>(handles, count);
}

std::vector<Instance> Scene::getInstances() const {
    std::uint32_t count = 0;
    nemra_instance_t** const handles = nemraScene_getInstances(handle, &count);
    return wrapAll<Instance>(handles, count);
}

std::vector<std::shared_ptr<Geometry>> Scene::getGeometries() const {
    std::uint32_t count = 0;
    nemra_geom_t** const handles = nemraScene_getGeometries(handle, &count);
    std::vector<std::shared_ptr<Geometry>> geometries;
    for (std::uint32_t i = 0; handles && i < count; ++i) {
        if (!handles[i]) continue;
        if (auto geometry = wrapByType(handles[i], typeOf(handles[i]))) geometries.push_back(std::move(geometry));
    }
    return geometries;
}

std::vector<std::shared_ptr<Mesh>> Scene::getMeshes() const {
    std::uint32_t count = 0;
    nemra_geom_t** const handles = nemraScene_getMeshes(handle, &count);
    return wrapShapes<Mesh>(handles, count);
}

std::vector<std::shared_ptr<Sphere>> Scene::getSpheres() const {
    std::uint32_t count = 0;
    nemra_geom_t** const handles = nemraScene_getSpheres(handle, &count);
    return wrapShapes<Sphere>(handles, count);
}

std::vector<std::shared_ptr<Cone>> Scene::getCones() const {
    std::uint32_t count = 0;
    nemra_geom_t** const handles = nemraScene_getCones(handle, &count);
    return wrapShapes<Cone>(handles, count);
}

}  // namespace NemraNode
