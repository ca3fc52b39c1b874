/// What is too rare for the fast path: curved shapes, instances, and surfaces that only their Bsdf knows. Compiled once, for
/// every processor; called by all kernels.
#pragma once

#include "engine/core/kernel/kernel_scene.h"

namespace nemra::core {

/// A point of a surface.
struct SurfacePoint {
    float position[3];
    float offset;
    float geometric[3];  ///< front side
    float shading[3];
    std::uint32_t surface;
    float lightPdf;  ///< with which light sampling picks this direction, per solid angle, seen from the ray's origin
};

/// For hits on curved shapes and instances (see workspace.h). Direction of unit length, t in metres.
void resolveRareHit(const KernelScene& scene, std::uint32_t hit, std::uint32_t inner, const float origin[3],
                    const float direction[3], float t, float u, float v, SurfacePoint& point);

/// A point on a curved light for a reference point; false if it gives none. `pdf` per solid angle with the chance of the light.
bool sampleCurvedLight(const KernelScene& scene, const LightRecord& light, const float reference[3], float u, float v,
                       float position[3], float normal[3], float& pdf);

/// A point on an instanced light, on the triangle that `part` takes (uniform over 32 bits). `pdf` per area, 1/m2, with the chance
/// of the light.
void sampleInstancedLight(const KernelScene& scene, const LightRecord& light, std::uint32_t part, float u, float v,
                          float position[3], float normal[3], float& pdf);

/// What becomes of a path at a surface of the generic kind.
struct RareScatter {
    bool goesOn;
    bool passed;  ///< went through as if nothing were there: the ray keeps its direction, density and number of reflections
    float wi[3];
    float weight[8];
};
void scatterRare(const KernelScene& scene, const SurfaceRecord& surface, const float direction[3], const float shading[3],
                 const float geometric[3], const std::int32_t* cells, const float* inCell, const float random[3],
                 RareScatter& result);

}  // namespace nemra::core
