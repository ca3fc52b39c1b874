#include "engine/node/api/scene_objects.h"

#include <algorithm>

#include "engine/common/log.h"
#include "engine/node/api/opaque.h"
#include "engine/node/import/load_imports.h"

namespace nemra::node {

namespace {

/// The place of a node that may never have been in a scene.
const ScenePlace& knownPlaceOf(const Node& node) {
    static const auto* const none = new ScenePlace;
    return node.attachment() ? static_cast<const HandedOut*>(node.attachment())->place : *none;
}

template <class Object>
void leave(Object& object, Kind kind) {
    if (object.place.handle) SlotTable::of(kind).retire(object.place.handle);
    object.place.set(nullptr, 0);
    object.place.handle = 0;
}

void closeGaps(auto& list) { list.erase(std::remove(list.begin(), list.end(), nullptr), list.end()); }

void setPlaces(SceneObject* scene, auto& list) {
    for (std::size_t i = 0; i < list.size(); ++i) placeOf(*list[i]).set(scene, i);
}

/// Names of materials that are in the scene become references to them.
void bindMaterials(Scene& scene) {
    std::unordered_map<std::string_view, std::shared_ptr<Node>> materials;
    for (const auto& node : scene.nodes)
        if (node->family() == "material" && !node->name().empty()) materials.try_emplace(node->name(), node);
    const auto bind = [&](auto& list) {
        for (const auto& object : list) {
            const auto found = object->material ? materials.end() : materials.find(object->materialName);
            if (found == materials.end()) continue;
            object->material = found->second;
            object->materialName.clear();
        }
    };
    bind(scene.geometries);
    bind(scene.instances);
}

}  // namespace

ScenePlace& placeOf(Node& node) { return HandedOut::of(node).place; }

Scene& SceneObject::contents() {
    if (!hasGaps_) return scene_;
    closeGaps(scene_.nodes);
    closeGaps(scene_.geometries);
    closeGaps(scene_.instances);
    if (isIndexed_) setPlaces(this, scene_.nodes);
    setPlaces(this, scene_.geometries);
    setPlaces(this, scene_.instances);
    hasGaps_ = false;
    return scene_;
}

void SceneObject::indexNames() {
    if (isIndexed_) return;
    contents();
    setPlaces(this, scene_.nodes);
    for (const auto& node : scene_.nodes) nodeNames_.insert(node.get());
    for (const auto& geometry : scene_.geometries) geometryNames_.insert(geometry.get());
    isIndexed_ = true;
}

template <class Object>
void SceneObject::append(std::vector<std::shared_ptr<Object>>& list, const std::shared_ptr<Object>& object) {
    list.push_back(object);
    placeOf(*object).set(this, list.size() - 1);
}

template <class Object>
bool SceneObject::takeOut(std::vector<std::shared_ptr<Object>>& list, const std::shared_ptr<Object>& object) {
    if (!object || placeOf(*object).scene != this) return false;
    list[placeOf(*object).position].reset();
    hasGaps_ = true;
    return true;
}

template <class Object>
void SceneObject::warnOfSecond(const NameIndex<Object>& index, const Object& object, const std::string& label) const {
    if (index.find(nameOf(object)) != index.end())
        log::warning("scene '" + scene_.name + "'", "a second " + label + "; references by name find the first");
}

void SceneObject::add(const std::shared_ptr<Node>& node) {
    indexNames();
    warnOfSecond(nodeNames_, *node, node->label());
    append(scene_.nodes, node);
    nodeNames_.insert(node.get());
}

void SceneObject::add(const std::shared_ptr<Geometry>& geometry) {
    indexNames();
    warnOfSecond(geometryNames_, *geometry, "geometry '" + geometry->name + "'");
    append(scene_.geometries, geometry);
    geometryNames_.insert(geometry.get());
}

void SceneObject::add(const std::shared_ptr<Instance>& instance) { append(scene_.instances, instance); }

/// What is said of materials must not reach outside of the scene, nor hold what has left it.
template <class Leaves>
void SceneObject::keepNamesOf(const Leaves& leaves) {
    const auto look = [&](auto& list) {
        for (const auto& object : list) {
            if (!object || !object->material || !leaves(*object->material)) continue;
            object->materialName = object->material->name();
            object->material.reset();
        }
    };
    look(scene_.geometries);
    look(scene_.instances);
}

bool SceneObject::remove(const std::shared_ptr<Node>& node) {
    indexNames();
    if (!node || knownPlaceOf(*node).scene != this) return false;
    nodeNames_.erase(node.get());
    takeOut(scene_.nodes, node);
    placeOf(*node).set(nullptr, 0);
    // Most materials that are removed are referred to by nobody but the caller's pointer.
    if (node->family() == "material" && node.use_count() > 1)
        keepNamesOf([&](const Node& material) { return &material == node.get(); });
    return true;
}

bool SceneObject::remove(const std::shared_ptr<Geometry>& geometry) {
    if (isIndexed_ && geometry && geometry->place.scene == this) geometryNames_.erase(geometry.get());
    if (!takeOut(scene_.geometries, geometry)) return false;
    leave(*geometry, Kind::geometry);
    return true;
}

bool SceneObject::remove(const std::shared_ptr<Instance>& instance) {
    if (!takeOut(scene_.instances, instance)) return false;
    leave(*instance, Kind::instance);
    return true;
}

void SceneObject::clearNodes() {
    if (!scene_.geometries.empty() || !scene_.instances.empty()) {
        indexNames();
        keepNamesOf([&](const Node& material) { return knownPlaceOf(material).scene == this; });
    }
    nodeNames_.clear();
    if (isIndexed_) {
        for (const auto& node : contents().nodes) placeOf(*node).set(nullptr, 0);
    }
    scene_.nodes.clear();
}

void SceneObject::clearGeometries() {
    geometryNames_.clear();
    for (const auto& geometry : contents().geometries) leave(*geometry, Kind::geometry);
    scene_.geometries.clear();
}

void SceneObject::clearInstances() {
    for (const auto& instance : contents().instances) leave(*instance, Kind::instance);
    scene_.instances.clear();
}

void SceneObject::clear() {
    clearInstances();
    clearGeometries();
    clearNodes();
    copies_.clear();
    scene_.imports.clear();
    scene_.searchPaths.clear();
    scene_.activeSetup.clear();
}

void SceneObject::replace(Scene read) {
    bindMaterials(read);
    clear();
    scene_ = std::move(read);
    isIndexed_ = false;
    setPlaces(this, scene_.geometries);
    setPlaces(this, scene_.instances);
}

std::shared_ptr<Node> SceneObject::findNode(std::string_view family, std::string_view name) {
    indexNames();
    const auto found = nodeNames_.lower_bound(Name{family, name});
    if (found == nodeNames_.end() || nameOf(**found) != Name{family, name}) return nullptr;
    return scene_.nodes[placeOf(**found).position];
}

std::shared_ptr<Node> SceneObject::adopt(const std::shared_ptr<Node>& material) {
    if (!material) return nullptr;
    indexNames();
    if (knownPlaceOf(*material).scene == this) return material;
    if (const auto known = copies_.find(material.get()); known != copies_.end() && known->second.original.lock() == material) {
        if (auto copy = known->second.copy.lock(); copy && copy->sameAs(*material)) return copy;
    }
    auto copy = material->copy();
    remember(material, copy);
    remember(copy, copy);  // the scene's own, when it is met again
    return copy;
}

void SceneObject::remember(const std::shared_ptr<Node>& original, const std::shared_ptr<Node>& copy) {
    copies_[original.get()] = {original, copy};
    if (copies_.size() <= copiesAtMost_) return;
    std::erase_if(copies_, [](const auto& entry) { return entry.second.original.expired() || entry.second.copy.expired(); });
    copiesAtMost_ = 2 * copies_.size() + 64;
}

void SceneObject::rename(Node& node, std::string name) {
    SceneObject* const scene = knownPlaceOf(node).scene;
    auto indexed = scene && scene->isIndexed_ ? scene->nodeNames_.extract(&node) : NameIndex<Node>::node_type();
    node.setName(std::move(name));
    if (indexed) scene->nodeNames_.insert(std::move(indexed));
}

void SceneObject::rename(Geometry& geometry, std::string name) {
    SceneObject* const scene = geometry.place.scene;
    auto indexed = scene && scene->isIndexed_ ? scene->geometryNames_.extract(&geometry) : NameIndex<Geometry>::node_type();
    geometry.name = std::move(name);
    if (indexed) scene->geometryNames_.insert(std::move(indexed));
}

bool SceneObject::join(Scene& loaded, const std::string& path) {
    if (!joinScenes(contents(), loaded, path)) return false;
    bindMaterials(scene_);
    nodeNames_.clear();
    geometryNames_.clear();
    isIndexed_ = false;
    setPlaces(this, scene_.geometries);
    setPlaces(this, scene_.instances);
    return true;
}

}  // namespace nemra::node
