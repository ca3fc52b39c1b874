#include "engine/node/api/scene_objects.h"

#include "engine/node/import/load_imports.h"

namespace nemra::node {

namespace {

template <class Handle>
void retireAll(std::vector<Handle*>& handles) {
    for (Handle*& handle : handles) retire(&handle);
    handles.clear();
}

}  // namespace

SceneObject::~SceneObject() { clear(); }

void SceneObject::clearNodes() { scene.nodes.clear(); }

void SceneObject::clearGeometries() {
    retireAll(geometryHandles);
    scene.geometries.clear();
}

void SceneObject::clearInstances() {
    retireAll(instanceHandles);
    scene.instances.clear();
}

void SceneObject::clear() {
    clearInstances();
    clearGeometries();
    clearNodes();
    scene.imports.clear();
    scene.searchPaths.clear();
    scene.activeSetup.clear();
}

void SceneObject::replace(Scene read) {
    clear();
    scene = std::move(read);
    geometryHandles.assign(scene.geometries.size(), nullptr);
    instanceHandles.assign(scene.instances.size(), nullptr);
}

bool SceneObject::join(Scene& loaded, const std::string& path) {
    geometryHandles.reserve(scene.geometries.size() + loaded.geometries.size());
    instanceHandles.reserve(scene.instances.size() + loaded.instances.size());
    if (!joinScenes(scene, loaded, path)) return false;
    geometryHandles.resize(scene.geometries.size());
    instanceHandles.resize(scene.instances.size());
    return true;
}

}  // namespace nemra::node
