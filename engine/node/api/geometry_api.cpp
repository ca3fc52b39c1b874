// What all geometries have in common, through the flat interface.
#include "engine/common/guarded.h"
#include "engine/common/text.h"
#include "engine/node/api/scene_objects.h"
#include "engine/node/api/serialize.h"
#include "engine/node/encoding/utf8.h"
#include "engine/node/mesh.h"
#include "engine/node/node_handle.h"
#include "module/flat/nemra_scene.h"

using namespace nemra;
using namespace nemra::node;

extern "C" {

const char* nemraGeometry_name(nemra_geom_t* geometry) {
    return guarded<const char*>(__func__, "", [&] {
        const auto found = find<Geometry>(geometry);
        return found ? found->name.c_str() : "";
    });
}

char* nemraGeometry_getType(nemra_geom_t* geometry) {
    static char nothing[1] = "";
    return guarded<char*>(__func__, nothing, [&] {
        const auto found = find<Geometry>(geometry);
        return permanentText(found ? typeName(*found) : "");
    });
}

int32_t nemraGeometry_numPrimitives(nemra_geom_t* geometry) {
    return guarded<int32_t>(__func__, 0, [&]() -> int32_t {
        const auto found = find<Geometry>(geometry);
        if (!found) return 0;
        const Mesh* const mesh = std::get_if<Mesh>(&found->shape);
        return mesh == nullptr ? 1 : static_cast<int32_t>(mesh->triangles.size() / 3);
    });
}

void nemraGeometry_setName(nemra_geom_t* geometry, const char* name) {
    guarded(__func__, [&] {
        if (const auto found = find<Geometry>(geometry)) SceneObject::rename(*found, readableText(viewOf(name)));
    });
}

void nemraGeometry_setMaterialName(nemra_geom_t* geometry, const char* name) {
    guarded(__func__, [&] {
        const auto found = find<Geometry>(geometry);
        if (!found) return;
        found->materialName = readableText(viewOf(name));
        found->material.reset();
    });
}

void nemraGeometry_setMaterial(nemra_geom_t* geometry, nemra_onode_t* material) {
    guarded(__func__, [&] {
        const auto found = find<Geometry>(geometry);
        const auto node = findNode(material);
        if (!found || !node) return;
        if (node->family() != "material") return log::warning(label(*found), node->label() + " isn't a material");
        giveMaterial(*found, node);
    });
}

char* nemraGeometry_getMaterialName(nemra_geom_t* geometry) {
    return guarded<char*>(__func__, nullptr, [&] {
        const auto found = find<Geometry>(geometry);
        if (!found) return callersText("");
        return callersText(found->material ? found->material->name() : found->materialName);
    });
}

nemra_onode_t* nemraGeometry_getMaterial(nemra_geom_t* geometry) {
    return guarded<nemra_onode_t*>(__func__, nullptr, [&]() -> nemra_onode_t* {
        const auto found = find<Geometry>(geometry);
        return found ? handleOf(materialOf(*found)) : nullptr;
    });
}

char* nemraGeometry_serialize(nemra_geom_t* geometry, int32_t format, int32_t* size) {
    if (size != nullptr) *size = 0;
    return guarded<char*>(__func__, nullptr, [&]() -> char* {
        const auto found = find<Geometry>(geometry);
        return found ? serialize("nemraGeometry_serialize", *found, format, size) : callersText("");
    });
}

void nemraGeometry_release(nemra_geom_t** handle) {
    guarded(__func__, [&] { releaseObject<Geometry>(handle); });
}

}  // extern "C"
