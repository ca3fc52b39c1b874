/// Spheres and cones, exact, under any affine map: ellipsoids and oblique cones are the same shapes seen from their own space.
#pragma once

#include <cstdint>

#include "engine/core/embree/embree.h"
#include "engine/core/geometry/affine.h"

namespace nemra::core {

enum class CurvedKind { sphere, cone };

/// Unit sphere about the origin, or a truncated cone with radius 1 at z = 0 and `topRadius` at z = 1, in its own space.
struct CurvedRecord {
    CurvedKind kind = CurvedKind::sphere;
    bool reverse = false;  ///< the front side is the inside
    double topRadius = 0.0;
    Affine toWorld;  ///< relative to the middle of the scene
    Affine toObject;
    double scale = 0.0;  ///< of a sphere that is still a sphere: its radius in m; 0: stretched, or a cone
    std::uint32_t surface = 0;
    std::int32_t light = -1;
    double area = 0.0;    ///< m2
    double pick = 0.0;    ///< chance that light sampling picks it
    float offset = 0.0F;  ///< m, as of a triangle

    /// First hit in (near, far), if any: its distance in units of the direction's length, else a negative number.
    double intersect(const Vec3& origin, const Vec3& direction, double near, double far) const;
    /// Unit normal of the front side at a point of the surface.
    Vec3 normal(const Vec3& point) const;
    /// The nearest point of the surface, seen from its own space: takes rounding off a hit point.
    Vec3 snapped(const Vec3& point) const;
    double computeArea() const;
    void bounds(float lower[3], float upper[3]) const;
};

struct CurvedSample {
    Vec3 point;
    Vec3 normal;
    double pdf = 0.0;  ///< per solid angle, seen from the reference point; without the chance of picking the shape
};

/// A point that the reference point may see; spheres give only their visible cap. pdf 0: none.
CurvedSample sampleCurved(const CurvedRecord& shape, const Vec3& reference, double u, double v);
/// The density with which sampleCurved would have found that point.
double curvedPdf(const CurvedRecord& shape, const Vec3& reference, const Vec3& point, const Vec3& normal);

/// A user geometry over `count` records, which must outlive it.
RTCGeometry makeCurvedGeometry(RTCDevice device, const CurvedRecord* records, unsigned count);

}  // namespace nemra::core
