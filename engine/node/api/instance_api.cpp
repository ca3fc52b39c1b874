// Instances through the flat interface.
#include <algorithm>
#include <cmath>

#include "engine/common/guarded.h"
#include "engine/common/text.h"
#include "engine/node/api/scene_objects.h"
#include "engine/node/api/serialize.h"
#include "engine/node/encoding/utf8.h"
#include "engine/node/node_handle.h"
#include "module/flat/nemra_node.h"
#include "module/flat/nemra_scene.h"

using namespace nemra;
using namespace nemra::node;

extern "C" {

nemra_instance_t* nemraInstance_create() {
    return guarded<nemra_instance_t*>(__func__, nullptr, [] { return publish<nemra_instance_t>(std::make_shared<Instance>()); });
}

nemra_instance_t* nemraInstance_copy(nemra_instance_t* instance) {
    return guarded<nemra_instance_t*>(__func__, nullptr, [&]() -> nemra_instance_t* {
        const auto found = find<Instance>(instance);
        return found ? publish<nemra_instance_t>(std::make_shared<Instance>(*found)) : nullptr;
    });
}

const char* nemraInstance_geometryName(nemra_instance_t* instance) {
    return guarded<const char*>(__func__, "", [&] {
        const auto found = find<Instance>(instance);
        return found ? found->geometryName.c_str() : "";
    });
}

void nemraInstance_setGeometryName(nemra_instance_t* instance, const char* name) {
    guarded(__func__, [&] {
        if (const auto found = find<Instance>(instance)) found->geometryName = readableText(viewOf(name));
    });
}

const double* nemraInstance_getTransform(nemra_instance_t* instance) {
    return guarded<const double*>(__func__, nullptr, [&]() -> const double* {
        const auto found = find<Instance>(instance);
        return found ? found->transform.data() : nullptr;
    });
}

void nemraInstance_setTransform(nemra_instance_t* instance, const double* matrix) {
    guarded(__func__, [&] {
        const auto found = find<Instance>(instance);
        if (!found || matrix == nullptr) return;
        const double* const end = matrix + found->transform.size();
        if (!std::all_of(matrix, end, [](double x) { return std::isfinite(x); }))
            return log::error("instance of '" + found->geometryName + "'", "transform left as it was: an element isn't finite");
        std::copy(matrix, end, found->transform.begin());
    });
}

nemra_onode_t* nemraInstance_material(nemra_instance_t* instance) {
    return guarded<nemra_onode_t*>(__func__, nullptr, [&]() -> nemra_onode_t* {
        const auto found = find<Instance>(instance);
        return found ? handleOf(materialOf(*found)) : nullptr;
    });
}

void nemraInstance_setMaterial(nemra_instance_t* instance, nemra_onode_t** material, bool fallback, bool keepOriginal) {
    guarded(__func__, [&] {
        const auto found = find<Instance>(instance);
        const auto node = material == nullptr ? nullptr : findNode(*material);
        if (!found || !node) return;
        if (node->family() != "material")
            return log::warning("instance of '" + found->geometryName + "'", node->label() + " isn't a material");
        giveMaterial(*found, node);
        found->materialIsFallback = fallback;
        if (!keepOriginal) nemraNode_release(material);
    });
}

char* nemraInstance_serialize(nemra_instance_t* instance, int32_t format, int32_t* size) {
    if (size != nullptr) *size = 0;
    return guarded<char*>(__func__, nullptr, [&]() -> char* {
        const auto found = find<Instance>(instance);
        return found ? serialize("nemraInstance_serialize", *found, format, size) : callersText("");
    });
}

void nemraInstance_release(nemra_instance_t** handle) {
    guarded(__func__, [&] { releaseObject<Instance>(handle); });
}

}  // extern "C"
