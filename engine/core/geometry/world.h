/// The surfaces of a scene, placed, as rendering needs them. Positions are relative to the middle of the scene, so that a scene
/// far from the origin of its coordinates keeps its precision in single precision arithmetic.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "engine/core/embree/handles.h"
#include "engine/core/geometry/affine.h"
#include "engine/core/geometry/area_shares.h"
#include "engine/core/geometry/curved.h"
#include "engine/core/kernel/kernel_scene.h"
#include "engine/core/layer/layer.h"
#include "engine/core/material/material.h"

namespace nemra::core {

/// A mesh in its own space, traced through instances.
struct SharedMesh {
    std::vector<TriangleRecord> triangles;  ///< `surface` isn't used, `normals` counts from the mesh's own first
    std::vector<NormalsRecord> normals;
    AreaShares shares;  ///< for light sampling; empty if no instance shines
    double area = 0.0;  ///< m2, in its own space
    embree::Scene scene;
};

struct InstanceRecord {
    const SharedMesh* mesh = nullptr;
    Affine toWorld;
    Affine toObject;
    bool mirrored = false;
    std::uint32_t surface = 0;
    float offset = 0.0F;
    double area = 0.0;  ///< m2, where it stands; 0 if it doesn't shine
    double pick = 0.0;  ///< chance that light sampling picks it

    /// Density per area with which light sampling finds a point of that triangle, 1/m2. The triangle is chosen by its area in the
    /// mesh's own space, so this differs between triangles under a map that stretches.
    double lightPdf(std::uint32_t triangle) const;
};

/// Which rays meet a thing. Things of one kind stand together.
struct RayKinds {
    bool camera = true;  ///< rays straight from the camera
    bool shadow = true;  ///< shadow rays: false for what lets all light through
    bool operator==(const RayKinds&) const = default;
    int index() const noexcept { return (camera ? 0 : 1) + (shadow ? 0 : 2); }
};
inline constexpr int kRayKinds = 4;

struct World {
    Vec3 center{};
    double radius = 0.0;
    std::vector<TriangleRecord> triangles;  ///< by kind
    std::vector<NormalsRecord> normals;
    std::vector<CurvedRecord> curved;  ///< by kind
    std::vector<InstanceRecord> instances;
    std::vector<SurfaceRecord> surfaces;
    std::vector<std::unique_ptr<Bsdf>> bsdfs;
    std::vector<std::unique_ptr<SharedMesh>> meshes;
    unsigned firstTriangle[kRayKinds + 1] = {};
    unsigned firstCurved[kRayKinds + 1] = {};
    std::vector<RayKinds> instanceKinds;

    std::size_t memory() const noexcept;
};

/// Reads geometries, instances and materials. `setupLabel` names the setup in messages.
World buildWorld(const LayerTree& layers, const Vec3& viewpoint, Translation& translation, SpectralTables& tables);

}  // namespace nemra::core
