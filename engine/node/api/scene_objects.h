/// What stands behind the handles of geometries, instances and scenes.
///
/// A geometry or an instance is either free-standing (only its handle keeps it) or a scene's (the scene keeps it as well, and
/// ends its handle when it leaves).
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "engine/common/slot_table.h"
#include "engine/node/scene.h"

namespace nemra::node {

/// Where an object of one of a scene's lists stands.
ScenePlace& placeOf(Node& node);
inline ScenePlace& placeOf(Geometry& geometry) { return geometry.place; }
inline ScenePlace& placeOf(Instance& instance) { return instance.place; }

/// Object behind nemra_scene_t. Its objects know their place in it, and names are indexed: adding, finding by name, renaming and
/// removing take no longer in a large scene.
class SceneObject {
public:
    SceneObject() = default;
    ~SceneObject() { clear(); }
    SceneObject(const SceneObject&) = delete;
    SceneObject& operator=(const SceneObject&) = delete;

    /// For reading lists and for what isn't one. Removals leave gaps in the lists, which are closed here.
    Scene& contents();

    /// At the end of its list, which must not have it yet; with one warning if another has its name.
    void add(const std::shared_ptr<Node>& node);
    void add(const std::shared_ptr<Geometry>& geometry);
    void add(const std::shared_ptr<Instance>& instance);
    /// False if it isn't in this scene. Its handle goes stale. What refers to a material that leaves keeps its name.
    bool remove(const std::shared_ptr<Node>& node);
    bool remove(const std::shared_ptr<Geometry>& geometry);
    bool remove(const std::shared_ptr<Instance>& instance);
    void clearNodes();
    void clearGeometries();
    void clearInstances();
    void clear();
    /// The scene becomes `read`; handles of what was in it go stale. Names of materials that are in it become references to them.
    void replace(Scene read);
    /// Takes what an import brings in behind the contents; false after one error message if names stand against it.
    bool join(Scene& loaded, const std::string& path);

    /// The first node of that family and name, or null.
    std::shared_ptr<Node> findNode(std::string_view family, std::string_view name);
    /// The scene's own node for a material that was made outside: itself if it is the scene's, the copy that was taken of it if
    /// it hasn't changed since, else a new copy.
    std::shared_ptr<Node> adopt(const std::shared_ptr<Node>& material);
    /// Remembers which copy the scene has of a node.
    void remember(const std::shared_ptr<Node>& original, const std::shared_ptr<Node>& copy);

    /// Gives a new name to an object, in a scene or not.
    static void rename(Node& node, std::string name);
    static void rename(Geometry& geometry, std::string name);

    // Answers of the last calls that gave lists.
    std::vector<nemra_onode_t*> nodeAnswer;
    std::vector<nemra_geom_t*> geometryAnswer;
    std::vector<nemra_instance_t*> instanceAnswer;

private:
    using Name = std::pair<std::string_view, std::string_view>;  ///< family ("" for geometries), name
    static Name nameOf(const Node& node) { return {node.family(), node.name()}; }
    static Name nameOf(const Geometry& geometry) { return {{}, geometry.name}; }
    /// By name, then in the order of the scene.
    struct ByName {
        using is_transparent = void;
        template <class Object>
        bool operator()(Object* a, Object* b) const {
            const auto left = nameOf(*a), right = nameOf(*b);
            return left != right ? left < right : placeOf(*a).position < placeOf(*b).position;
        }
        template <class Object>
        bool operator()(Object* a, const Name& b) const {
            return nameOf(*a) < b;
        }
        template <class Object>
        bool operator()(const Name& a, Object* b) const {
            return a < nameOf(*b);
        }
    };
    template <class Object>
    using NameIndex = std::set<Object*, ByName>;

    template <class Object>
    void append(std::vector<std::shared_ptr<Object>>& list, const std::shared_ptr<Object>& object);
    template <class Object>
    bool takeOut(std::vector<std::shared_ptr<Object>>& list, const std::shared_ptr<Object>& object);
    template <class Object>
    void warnOfSecond(const NameIndex<Object>& index, const Object& object, const std::string& label) const;
    template <class Leaves>
    void keepNamesOf(const Leaves& leaves);
    void indexNames();

    Scene scene_;
    bool hasGaps_ = false;
    bool isIndexed_ = false;  ///< the names; and nodes, which may be many, have their places
    NameIndex<Node> nodeNames_;
    NameIndex<Geometry> geometryNames_;
    struct Copied {
        std::weak_ptr<Node> original, copy;
    };
    std::unordered_map<const Node*, Copied> copies_;  ///< by original
    std::size_t copiesAtMost_ = 64;                   ///< before those that are gone are dropped
};

/// True if nothing but its handle and the caller's own pointer keeps the object.
template <class Object>
bool isFreeStanding(const std::shared_ptr<Object>& object) {
    return object.use_count() == 2;
}

/// What a scene takes for itself: a copy, or the object itself where the original is given away and nobody else has it, with a
/// material of the scene's own. The field is cleared when the original is given away. Null for a null or stale handle.
template <class Object, class Handle>
std::shared_ptr<Object> takeForScene(SceneObject& scene, Handle** field, bool keepOriginal) {
    if (field == nullptr) return nullptr;
    std::shared_ptr<Object> object = find<Object>(*field);
    if (!object) return nullptr;
    auto material = scene.adopt(object->material);
    std::shared_ptr<Object> taken = !keepOriginal && isFreeStanding(object) ? object : std::make_shared<Object>(*object);
    taken->material = std::move(material);
    if (taken == object) {
        retire(field);
    } else if (!keepOriginal) {
        *field = nullptr;  // it is a scene's: that one keeps it, and its other wrappers stay good
    }
    return taken;
}

/// Gives a geometry or an instance back. One that a scene keeps stays there.
template <class Object, class Handle>
void releaseObject(Handle** field) {
    if (field == nullptr) return;
    const std::shared_ptr<Object> object = find<Object>(*field);
    if (object && isFreeStanding(object)) retire(field);
    *field = nullptr;
}

/// The handle of a scene's geometry or instance, made when it is first asked for.
template <class Handle, class Object>
Handle* sceneHandleOf(const std::shared_ptr<Object>& object) {
    if (object->place.handle == 0) object->place.handle = toId(publish<Handle>(object));
    return toHandle<Handle>(object->place.handle);
}

/// The material of a geometry or an instance; in a scene also one that it only names. Null if there is none.
template <class Object>
std::shared_ptr<Node> materialOf(const Object& object) {
    if (object.material || object.materialName.empty() || !object.place.scene) return object.material;
    return object.place.scene->findNode("material", object.materialName);
}

/// Gives a geometry or an instance a material: the scene's own copy of it where it stands in one.
template <class Object>
void giveMaterial(Object& object, const std::shared_ptr<Node>& material) {
    object.material = object.place.scene ? object.place.scene->adopt(material) : material;
    object.materialName.clear();
}

}  // namespace nemra::node
