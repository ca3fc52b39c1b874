// What scenes hold, through the flat interface: adding, removing, listing.
#include "engine/common/guarded.h"
#include "engine/common/text.h"
#include "engine/node/api/scene_objects.h"
#include "engine/node/encoding/utf8.h"
#include "engine/node/mesh.h"
#include "engine/node/node_handle.h"
#include "module/flat/nemra_node.h"
#include "module/flat/nemra_scene.h"

namespace {

using namespace nemra;
using namespace nemra::node;

std::vector<std::vector<std::string>> layersOf(const char*** paths) {
    std::vector<std::vector<std::string>> layers;
    for (; paths != nullptr && *paths != nullptr; ++paths) {
        auto& path = layers.emplace_back();
        for (const char** name = *paths; *name != nullptr; ++name)
            if (**name != '\0') path.push_back(readableText(*name));
    }
    return layers;
}

/// Points at the first of `list` and fills `count`.
template <class Handle>
Handle** answer(std::vector<Handle*>& list, std::uint32_t* count) {
    if (count != nullptr) *count = static_cast<std::uint32_t>(list.size());
    return list.empty() ? nullptr : list.data();
}

template <class Accept>
nemra_onode_t** listNodes(const char* function, nemra_scene_t* scene, std::uint32_t* count, Accept&& accept) {
    if (count != nullptr) *count = 0;
    return guarded<nemra_onode_t**>(function, nullptr, [&]() -> nemra_onode_t** {
        const auto object = find<SceneObject>(scene);
        if (!object) return nullptr;
        object->nodeAnswer.clear();
        for (const auto& node : object->contents().nodes)
            if (accept(*node)) object->nodeAnswer.push_back(handleOf(node));
        return answer(object->nodeAnswer, count);
    });
}

template <class Accept>
nemra_geom_t** listGeometries(const char* function, nemra_scene_t* scene, std::uint32_t* count, Accept&& accept) {
    if (count != nullptr) *count = 0;
    return guarded<nemra_geom_t**>(function, nullptr, [&]() -> nemra_geom_t** {
        const auto object = find<SceneObject>(scene);
        if (!object) return nullptr;
        object->geometryAnswer.clear();
        for (const auto& geometry : object->contents().geometries)
            if (accept(*geometry)) object->geometryAnswer.push_back(sceneHandleOf<nemra_geom_t>(geometry));
        return answer(object->geometryAnswer, count);
    });
}

template <class Shape>
bool isA(const Geometry& geometry) {
    return std::holds_alternative<Shape>(geometry.shape);
}

}  // namespace

extern "C" {

nemra_onode_t* nemraScene_addNode(nemra_scene_t* scene, nemra_onode_t** node, bool keepOriginal) {
    return guarded<nemra_onode_t*>(__func__, nullptr, [&]() -> nemra_onode_t* {
        const auto object = find<SceneObject>(scene);
        const auto original = node == nullptr ? nullptr : findNode(*node);
        if (!object || !original) return nullptr;
        const auto copy = original->copy();
        object->add(copy);
        object->remember(original, copy);
        if (!keepOriginal) nemraNode_release(node);
        return handleOf(copy);
    });
}

nemra_geom_t* nemraScene_addGeom(nemra_scene_t* scene, nemra_geom_t** geometry, bool keepOriginal) {
    return guarded<nemra_geom_t*>(__func__, nullptr, [&]() -> nemra_geom_t* {
        const auto object = find<SceneObject>(scene);
        if (!object) return nullptr;
        const auto taken = takeForScene<Geometry>(*object, geometry, keepOriginal);
        if (!taken) return nullptr;
        object->add(taken);
        return sceneHandleOf<nemra_geom_t>(taken);
    });
}

uint64_t nemraScene_addInstance(nemra_scene_t* scene, nemra_instance_t** instance, const char*** layerNames, bool keepOriginal) {
    return guarded<uint64_t>(__func__, 0, [&]() -> uint64_t {
        const auto object = find<SceneObject>(scene);
        if (!object) return 0;
        const auto taken = takeForScene<Instance>(*object, instance, keepOriginal);
        if (!taken) return 0;
        taken->layers = layersOf(layerNames);  // not those that a copy of a scene's instance brings along
        object->add(taken);
        return toId(sceneHandleOf<nemra_instance_t>(taken));
    });
}

bool nemraScene_removeNode(nemra_scene_t* scene, nemra_onode_t* node) {
    return guarded<bool>(__func__, false, [&] {
        const auto object = find<SceneObject>(scene);
        return object && object->remove(findNode(node));
    });
}

bool nemraScene_removeGeom(nemra_scene_t* scene, nemra_geom_t* geometry) {
    return guarded<bool>(__func__, false, [&] {
        const auto object = find<SceneObject>(scene);
        return object && object->remove(find<Geometry>(geometry));
    });
}

bool nemraScene_removeInstance(nemra_scene_t* scene, nemra_instance_t* instance) {
    return guarded<bool>(__func__, false, [&] {
        const auto object = find<SceneObject>(scene);
        return object && object->remove(find<Instance>(instance));
    });
}

// A number tells its kind, so at most one of the three finds it.
void nemraScene_remove(nemra_scene_t* scene, uint64_t number) {
    guarded(__func__, [&] {
        const auto object = find<SceneObject>(scene);
        if (!object) return;
        const bool removed = object->remove(find<Instance>(toHandle<nemra_instance_t>(number))) ||
                             object->remove(find<Geometry>(toHandle<nemra_geom_t>(number))) ||
                             object->remove(findNode(toHandle<nemra_onode_t>(number)));
        if (!removed)
            log::warning("scene '" + object->contents().name + "'", "nothing to remove under number " + std::to_string(number));
    });
}

void nemraScene_clear(nemra_scene_t* scene) {
    guarded(__func__, [&] {
        if (const auto object = find<SceneObject>(scene)) object->clear();
    });
}
void nemraScene_clearNodes(nemra_scene_t* scene) {
    guarded(__func__, [&] {
        if (const auto object = find<SceneObject>(scene)) object->clearNodes();
    });
}
void nemraScene_clearGeometry(nemra_scene_t* scene) {
    guarded(__func__, [&] {
        if (const auto object = find<SceneObject>(scene)) object->clearGeometries();
    });
}
void nemraScene_clearInstances(nemra_scene_t* scene) {
    guarded(__func__, [&] {
        if (const auto object = find<SceneObject>(scene)) object->clearInstances();
    });
}

nemra_onode_t** nemraScene_getNodes(nemra_scene_t* scene, uint32_t* count) {
    return listNodes(__func__, scene, count, [](const Node&) { return true; });
}

nemra_onode_t** nemraScene_findNodes(nemra_scene_t* scene, const char* className, const char* typeName, const char* name,
                                     uint32_t* count) {
    const auto fits = [](const char* wanted, const std::string& is) { return viewOf(wanted).empty() || viewOf(wanted) == is; };
    return listNodes(__func__, scene, count, [&](const Node& node) {
        return fits(className, node.family()) && fits(typeName, node.type()) && fits(name, node.name());
    });
}

nemra_instance_t** nemraScene_getInstances(nemra_scene_t* scene, uint32_t* count) {
    if (count != nullptr) *count = 0;
    return guarded<nemra_instance_t**>(__func__, nullptr, [&]() -> nemra_instance_t** {
        const auto object = find<SceneObject>(scene);
        if (!object) return nullptr;
        object->instanceAnswer.clear();
        for (const auto& instance : object->contents().instances)
            object->instanceAnswer.push_back(sceneHandleOf<nemra_instance_t>(instance));
        return answer(object->instanceAnswer, count);
    });
}

nemra_geom_t** nemraScene_getGeometries(nemra_scene_t* scene, uint32_t* count) {
    return listGeometries(__func__, scene, count, [](const Geometry&) { return true; });
}
nemra_geom_t** nemraScene_getMeshes(nemra_scene_t* scene, uint32_t* count) {
    return listGeometries(__func__, scene, count, isA<Mesh>);
}
nemra_geom_t** nemraScene_getSpheres(nemra_scene_t* scene, uint32_t* count) {
    return listGeometries(__func__, scene, count, isA<Sphere>);
}
nemra_geom_t** nemraScene_getCones(nemra_scene_t* scene, uint32_t* count) {
    return listGeometries(__func__, scene, count, isA<Cone>);
}

}  // extern "C"
