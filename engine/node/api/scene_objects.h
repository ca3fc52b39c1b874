/// What stands behind the handles of geometries, instances and scenes.
///
/// A geometry or an instance is either free-standing (only its handle keeps it) or a scene's (the scene keeps it as well, and
/// ends its handle when it leaves).
#pragma once

#include <memory>
#include <vector>

#include "engine/common/slot_table.h"
#include "engine/node/scene.h"

namespace nemra::node {

/// Object behind nemra_scene_t. Handles of geometries and instances stand beside them in the same order; those of nodes
/// belong to the nodes and go stale with them.
struct SceneObject {
    Scene scene;
    std::vector<nemra_geom_t*> geometryHandles;
    std::vector<nemra_instance_t*> instanceHandles;

    // Answers of the last calls that gave lists.
    std::vector<nemra_onode_t*> nodeAnswer;
    std::vector<nemra_geom_t*> geometryAnswer;
    std::vector<nemra_instance_t*> instanceAnswer;

    ~SceneObject();

    void clearNodes();
    void clearGeometries();
    void clearInstances();
    void clear();
    /// The scene becomes `read`; handles of what was in it go stale. Handles of the new contents are made when they are asked
    /// for.
    void replace(Scene read);
    /// Takes what an import brings in behind the contents; false after one error message if names stand against it.
    bool join(Scene& loaded, const std::string& path);
};

/// True if nothing but its handle and the caller's own pointer keeps the object.
template <class Object>
bool isFreeStanding(const std::shared_ptr<Object>& object) {
    return object.use_count() == 2;
}

/// What a scene takes for itself: a copy, or the object itself where the original is given away and nobody else has it. The field
/// is cleared when the original is given away. Null for a null or stale handle.
template <class Object, class Handle>
std::shared_ptr<Object> takeForScene(Handle** field, bool keepOriginal) {
    if (field == nullptr) return nullptr;
    std::shared_ptr<Object> object = find<Object>(*field);
    if (!object) return nullptr;
    if (keepOriginal) return std::make_shared<Object>(*object);
    if (isFreeStanding(object)) {
        retire(field);
        return object;
    }
    *field = nullptr;  // it is a scene's: that one keeps it, and its other wrappers stay good
    return std::make_shared<Object>(*object);
}

/// Gives a geometry or an instance back. One that a scene keeps stays there.
template <class Object, class Handle>
void releaseObject(Handle** field) {
    if (field == nullptr) return;
    const std::shared_ptr<Object> object = find<Object>(*field);
    if (object && isFreeStanding(object)) retire(field);
    *field = nullptr;
}

}  // namespace nemra::node
