/// The arrays of a batch of paths. Per path, in its slot: what belongs to the path as a whole. Per ray, packed: what changes each
/// bounce.
#pragma once

#include <cstdint>

#include "engine/core/kernel/kernel_scene.h"

namespace nemra::core {

inline constexpr std::uint32_t kMiss = 0xFFFFFFFFU;
inline constexpr std::uint32_t kCurvedHit = 0x80000000U;    ///< | index of the shape
inline constexpr std::uint32_t kInstanceHit = 0xC0000000U;  ///< | index of the instance; the triangle stands in `hitInner`

struct RayArrays {
    float* ox;
    float* oy;
    float* oz;
    float* dx;
    float* dy;
    float* dz;
    float* pdf;  ///< density per solid angle with which the last bounce chose this direction; negative: it had no choice
    std::int32_t* slot;
    std::uint32_t* bounce;  ///< reflections so far
};

struct Workspace {
    // By slot. Spectral arrays hold the path's wavelengths side by side.
    float* throughput;
    float* radiance;
    float* pending;        ///< what arrives if the path's shadow ray is free
    std::int32_t* cell;    ///< of the grid
    float* inCell;         ///< position in the cell, 0 to 1
    float* weight;         ///< 1 / (density * wavelengths), nm
    float* firstDistance;  ///< m; negative: the first ray met nothing
    std::uint32_t* reversed;
    std::uint32_t* pixel;

    RayArrays rays[2];

    // By ray, beside rays.
    float* hitT;
    float* hitU;
    float* hitV;
    std::uint32_t* hit;
    std::uint32_t* hitInner;

    // By vertex of the diffuse path, packed: point moved off the surface, geometric and shading normal on the side of the ray.
    float *px, *py, *pz, *gx, *gy, *gz, *nx, *ny, *nz, *offset;
    std::int32_t* vertexSlot;
    std::int32_t* vertexSurface;
    std::uint32_t* vertexBounce;
    std::uint32_t *vertexReversed, *vertexPixel;
    float *uLight, *vLight, *uScatter, *vScatter, *uChoice, *uRoulette;
    // Next event: shadow ray by vertex, its weight (0: none), the light's table and scale.
    float *sx, *sy, *sz, *shadowWeight;
    std::int32_t* lightEmission;
    // The next direction.
    float *wx, *wy, *wz, *wPdf;

    // Shadow rays, packed.
    float *qox, *qoy, *qoz, *qdx, *qdy, *qdz;
    std::int32_t* shadowSlot;
    std::uint8_t* blocked;
};

}  // namespace nemra::core
