/// Analytic spheres.
#pragma once

#include "scene/geometry.h"

namespace NemraNode {

class Sphere final : public Geometry {
public:
    explicit Sphere(nemra_geom_t* engineHandle) : Geometry(engineHandle) {}
    /// radius in metres; `reverse` turns the normals inwards.
    Sphere(const std::string& name, float radius, bool reverse) : Geometry(nemraSphere_create(name.c_str(), radius, reverse)) {}

    void concrete() override {}

    bool setRadius(float radius) const { return handle && nemraSphere_setRadius(handle, radius); }
    /// -1 for a deleted sphere.
    float getRadius() const { return handle ? nemraSphere_getRadius(handle) : -1.0f; }
};

}  // namespace NemraNode
