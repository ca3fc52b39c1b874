/// Analytic truncated cones.
#pragma once

#include "scene/geometry.h"

namespace NemraNode {

class Cone final : public Geometry {
public:
    explicit Cone(nemra_geom_t* engineHandle) : Geometry(engineHandle) {}
    /// `reverse` turns the normals inwards.
    Cone(const std::string& name, float rtop, bool reverse) : Geometry(nemraCone_create(name.c_str(), rtop, reverse)) {}

    void concrete() override {}

    bool setRtop(float rtop) const { return handle && nemraCone_setRtop(handle, rtop); }
    /// -1 for a deleted cone.
    float getRtop() const { return handle ? nemraCone_getRtop(handle) : -1.0f; }
};

}  // namespace NemraNode
