// Spheres and cones through the flat interface.
#include "engine/common/guarded.h"
#include "engine/common/slot_table.h"
#include "engine/common/text.h"
#include "engine/node/encoding/utf8.h"
#include "engine/node/mesh.h"
#include "module/flat/nemra_scene.h"

namespace {

using namespace nemra;
using namespace nemra::node;

template <class Shape>
nemra_geom_t* create(const char* name, const Shape& shape) {
    auto geometry = std::make_shared<Geometry>();
    geometry->name = readableText(viewOf(name));
    geometry->shape = shape;
    if (const std::string why = whyRefused(shape); !why.empty()) {
        log::error(label(*geometry), "not created: " + why);
        return nullptr;
    }
    return publish<nemra_geom_t>(geometry);
}

/// Changes a copy, and keeps it if it is sound.
template <class Shape>
bool change(nemra_geom_t* handle, float Shape::*field, float value) {
    const auto geometry = find<Geometry>(handle);
    Shape* const shape = geometry ? std::get_if<Shape>(&geometry->shape) : nullptr;
    if (shape == nullptr) return false;
    Shape changed = *shape;
    changed.*field = value;
    if (const std::string why = whyRefused(changed); !why.empty()) {
        log::warning(label(*geometry), "left as it was: " + why);
        return false;
    }
    *shape = changed;
    return true;
}

template <class Shape>
float read(nemra_geom_t* handle, float Shape::*field) {
    const auto geometry = find<Geometry>(handle);
    const Shape* const shape = geometry ? std::get_if<Shape>(&geometry->shape) : nullptr;
    return shape == nullptr ? 0.0F : shape->*field;
}

}  // namespace

extern "C" {

nemra_geom_t* nemraSphere_create(const char* name, float radius, bool reverse) {
    return guarded<nemra_geom_t*>(__func__, nullptr, [&] { return create(name, Sphere{radius, reverse}); });
}
bool nemraSphere_setRadius(nemra_geom_t* sphere, float radius) {
    return guarded<bool>(__func__, false, [&] { return change(sphere, &Sphere::radius, radius); });
}
float nemraSphere_getRadius(nemra_geom_t* sphere) {
    return guarded<float>(__func__, 0.0F, [&] { return read(sphere, &Sphere::radius); });
}

nemra_geom_t* nemraCone_create(const char* name, float rtop, bool reverse) {
    return guarded<nemra_geom_t*>(__func__, nullptr, [&] { return create(name, Cone{rtop, reverse}); });
}
bool nemraCone_setRtop(nemra_geom_t* cone, float rtop) {
    return guarded<bool>(__func__, false, [&] { return change(cone, &Cone::topRadius, rtop); });
}
float nemraCone_getRtop(nemra_geom_t* cone) {
    return guarded<float>(__func__, 0.0F, [&] { return read(cone, &Cone::topRadius); });
}

}  // extern "C"
