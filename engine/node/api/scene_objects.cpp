#include "engine/node/api/scene_objects.h"

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

}  // namespace nemra::node
