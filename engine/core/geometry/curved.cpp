#include "engine/core/geometry/curved.h"

#include <algorithm>
#include <limits>
#include <numbers>

namespace nemra::core {

namespace {

constexpr double kPi = std::numbers::pi;

/// Roots of a t2 - 2 b t + c = 0 in ascending order, without cancellation. False if there are none.
bool solveQuadratic(double a, double b, double c, double discriminant, double& t0, double& t1) {
    if (!(discriminant >= 0.0)) return false;
    const double q = b + std::copysign(std::sqrt(discriminant), b);
    if (a == 0.0 || std::abs(a) < 1.0e-14 * std::abs(b)) {  // nearly parallel to the cone's side: one root
        if (b == 0.0) return false;
        t0 = t1 = c / (2.0 * b);
        return true;
    }
    t0 = q / a;
    t1 = q != 0.0 ? c / q : t0;
    if (t0 > t1) std::swap(t0, t1);
    return true;
}

Vec3 objectNormal(const CurvedRecord& shape, const Vec3& p) {
    if (shape.kind == CurvedKind::sphere) return p;
    const double k = shape.topRadius - 1.0;
    const double radius = std::hypot(p[0], p[1]);
    return radius > 0.0 ? Vec3{p[0] / radius, p[1] / radius, -k} : Vec3{0.0, 0.0, -k};
}

/// World area over own area, at that (not necessarily unit) own normal.
double stretch(const CurvedRecord& shape, const Vec3& own) {
    return std::abs(shape.toWorld.determinant()) * length(shape.toObject.transposed(normalized(own)));
}

double ownArea(const CurvedRecord& shape) {
    if (shape.kind == CurvedKind::sphere) return 4.0 * kPi;
    const double k = shape.topRadius - 1.0;
    return kPi * (1.0 + shape.topRadius) * std::sqrt(1.0 + k * k);
}

/// A point of the own surface, evenly distributed by own area.
Vec3 ownPoint(const CurvedRecord& shape, double u, double v) {
    const double phi = 2.0 * kPi * v;
    if (shape.kind == CurvedKind::sphere) {
        const double z = 1.0 - 2.0 * u;
        const double r = std::sqrt(std::max(0.0, 1.0 - z * z));
        return {r * std::cos(phi), r * std::sin(phi), z};
    }
    const double k = shape.topRadius - 1.0;  // radius along z has density proportional to itself
    const double r = std::sqrt(1.0 + u * (shape.topRadius * shape.topRadius - 1.0));
    const double z = std::abs(k) > 1.0e-9 ? (r - 1.0) / k : u;
    return {r * std::cos(phi), r * std::sin(phi), z};
}

}  // namespace

double CurvedRecord::intersect(const Vec3& origin, const Vec3& direction, double near, double far) const {
    const Vec3 o = toObject.point(origin);
    const Vec3 d = toObject.vector(direction);
    double t0 = 0.0;
    double t1 = 0.0;
    if (kind == CurvedKind::sphere) {
        const double a = dot(d, d);
        const double b = -dot(o, d);
        // From the point of closest approach, not b2 - a c, which loses everything for small distant spheres (Haines et al.
        // 2019).
        const Vec3 closest = o + d * (b / a);
        if (!solveQuadratic(a, b, dot(o, o) - 1.0, a * (1.0 - dot(closest, closest)), t0, t1)) return -1.0;
        if (t0 > near && t0 < far) return t0;
        return t1 > near && t1 < far ? t1 : -1.0;
    }
    const double k = topRadius - 1.0;
    const double r = 1.0 + k * o[2];
    const double a = d[0] * d[0] + d[1] * d[1] - k * k * d[2] * d[2];
    const double b = -(o[0] * d[0] + o[1] * d[1] - k * r * d[2]);
    const double c = o[0] * o[0] + o[1] * o[1] - r * r;
    if (!solveQuadratic(a, b, c, b * b - a * c, t0, t1)) return -1.0;
    for (const double t : {t0, t1}) {
        const double z = o[2] + t * d[2];
        if (t > near && t < far && z >= 0.0 && z <= 1.0) return t;
    }
    return -1.0;
}

Vec3 CurvedRecord::normal(const Vec3& point) const {
    const Vec3 n = normalized(toObject.transposed(objectNormal(*this, toObject.point(point))));
    return reverse ? n * -1.0 : n;
}

Vec3 CurvedRecord::snapped(const Vec3& point) const {
    Vec3 p = toObject.point(point);
    if (kind == CurvedKind::sphere) return toWorld.point(normalized(p));
    const double wanted = 1.0 + (topRadius - 1.0) * p[2];
    const double radius = std::hypot(p[0], p[1]);
    if (radius > 0.0) {
        p[0] *= wanted / radius;
        p[1] *= wanted / radius;
    }
    return toWorld.point(p);
}

double CurvedRecord::computeArea() const {
    if (kind == CurvedKind::sphere && scale > 0.0) return 4.0 * kPi * scale * scale;
    constexpr int kSteps = 256;  // midpoints in even own area; exact to about 1e-5 even for flat ellipsoids
    double sum = 0.0;
    for (int i = 0; i < kSteps; ++i) {
        for (int j = 0; j < kSteps; ++j) {
            sum += stretch(*this, objectNormal(*this, ownPoint(*this, (i + 0.5) / kSteps, (j + 0.5) / kSteps)));
        }
    }
    return ownArea(*this) * sum / (kSteps * kSteps);
}

void CurvedRecord::bounds(float lower[3], float upper[3]) const {
    for (int i = 0; i < 3; ++i) {
        const Vec3& row = toWorld.linear[i];
        double low = toWorld.shift[i];
        double high = low;
        if (kind == CurvedKind::sphere) {
            low -= length(row);
            high += length(row);
        } else {
            const double across = std::hypot(row[0], row[1]);
            const double at[2] = {toWorld.shift[i], toWorld.shift[i] + row[2]};
            low = std::min(at[0] - across, at[1] - across * topRadius);
            high = std::max(at[0] + across, at[1] + across * topRadius);
        }
        const double slack = 1.0e-6 * std::max({std::abs(low), std::abs(high), high - low});
        lower[i] = static_cast<float>(low - slack);
        upper[i] = static_cast<float>(high + slack);
    }
}

CurvedSample sampleCurved(const CurvedRecord& shape, const Vec3& reference, double u, double v) {
    CurvedSample s;
    if (shape.scale > 0.0) {
        const Vec3 toCenter = shape.toWorld.shift - reference;
        const double distance2 = dot(toCenter, toCenter);
        const double radius = shape.scale;
        if (distance2 > radius * radius * 1.0001) {
            // Evenly over the cone of directions that meet the sphere.
            const double sin2 = radius * radius / distance2;
            const double oneMinusCosMax = sin2 / (1.0 + std::sqrt(1.0 - sin2));
            const double oneMinusCos = u * oneMinusCosMax;
            const double cosine = 1.0 - oneMinusCos;
            const double sine2 = oneMinusCos * (2.0 - oneMinusCos);
            const double distance = std::sqrt(distance2);
            const double near = distance * cosine - std::sqrt(std::max(0.0, radius * radius - distance2 * sine2));
            const Vec3 axis = toCenter * (1.0 / distance);
            const Vec3 a = normalized(std::abs(axis[0]) < 0.6 ? cross(axis, {1, 0, 0}) : cross(axis, {0, 1, 0}));
            const Vec3 b = cross(axis, a);
            const double sine = std::sqrt(sine2);
            const double phi = 2.0 * kPi * v;
            const Vec3 direction = axis * cosine + a * (sine * std::cos(phi)) + b * (sine * std::sin(phi));
            s.point = shape.snapped(reference + direction * near);
            s.normal = shape.normal(s.point);
            s.pdf = 1.0 / (2.0 * kPi * oneMinusCosMax);
            return s;
        }
    }
    const Vec3 own = ownPoint(shape, u, v);
    s.point = shape.toWorld.point(own);
    s.normal = shape.normal(s.point);
    s.pdf = curvedPdf(shape, reference, s.point, s.normal);
    return s;
}

double curvedPdf(const CurvedRecord& shape, const Vec3& reference, const Vec3& point, const Vec3& normal) {
    if (shape.scale > 0.0) {
        const Vec3 toCenter = shape.toWorld.shift - reference;
        const double distance2 = dot(toCenter, toCenter);
        const double radius = shape.scale;
        if (distance2 > radius * radius * 1.0001) {
            const double sin2 = radius * radius / distance2;
            return (1.0 + std::sqrt(1.0 - sin2)) / (2.0 * kPi * sin2);
        }
    }
    const Vec3 d = point - reference;
    const double distance2 = dot(d, d);
    const double cosine = std::abs(dot(d, normal)) / std::sqrt(distance2);
    const double area = ownArea(shape) * stretch(shape, objectNormal(shape, shape.toObject.point(point)));
    return cosine > 0.0 && area > 0.0 ? distance2 / (cosine * area) : 0.0;
}

namespace {

void curvedBounds(const RTCBoundsFunctionArguments* args) {
    const auto& record = static_cast<const CurvedRecord*>(args->geometryUserPtr)[args->primID];
    float lower[3], upper[3];
    record.bounds(lower, upper);
    args->bounds_o->lower_x = lower[0];
    args->bounds_o->lower_y = lower[1];
    args->bounds_o->lower_z = lower[2];
    args->bounds_o->upper_x = upper[0];
    args->bounds_o->upper_y = upper[1];
    args->bounds_o->upper_z = upper[2];
}

double hitDistance(const CurvedRecord& record, RTCRayN* ray, unsigned n, unsigned i) {
    const Vec3 origin{RTCRayN_org_x(ray, n, i), RTCRayN_org_y(ray, n, i), RTCRayN_org_z(ray, n, i)};
    const Vec3 direction{RTCRayN_dir_x(ray, n, i), RTCRayN_dir_y(ray, n, i), RTCRayN_dir_z(ray, n, i)};
    return record.intersect(origin, direction, RTCRayN_tnear(ray, n, i), RTCRayN_tfar(ray, n, i));
}

void curvedIntersect(const RTCIntersectFunctionNArguments* args) {
    const auto& record = static_cast<const CurvedRecord*>(args->geometryUserPtr)[args->primID];
    RTCRayN* rays = RTCRayHitN_RayN(args->rayhit, args->N);
    RTCHitN* hits = RTCRayHitN_HitN(args->rayhit, args->N);
    for (unsigned i = 0; i < args->N; ++i) {
        if (args->valid[i] == 0) continue;
        const double t = hitDistance(record, rays, args->N, i);
        if (t < 0.0) continue;
        RTCRayN_tfar(rays, args->N, i) = static_cast<float>(t);
        RTCHitN_primID(hits, args->N, i) = args->primID;
        RTCHitN_geomID(hits, args->N, i) = args->geomID;
        RTCHitN_instID(hits, args->N, i, 0) = RTC_INVALID_GEOMETRY_ID;
    }
}

void curvedOccluded(const RTCOccludedFunctionNArguments* args) {
    const auto& record = static_cast<const CurvedRecord*>(args->geometryUserPtr)[args->primID];
    for (unsigned i = 0; i < args->N; ++i) {
        if (args->valid[i] == 0) continue;
        if (hitDistance(record, args->ray, args->N, i) < 0.0) continue;
        RTCRayN_tfar(args->ray, args->N, i) = -std::numeric_limits<float>::infinity();
    }
}

}  // namespace

RTCGeometry makeCurvedGeometry(RTCDevice device, const CurvedRecord* records, unsigned count) {
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_USER);
    rtcSetGeometryUserPrimitiveCount(geometry, count);
    rtcSetGeometryUserData(geometry, const_cast<CurvedRecord*>(records));
    rtcSetGeometryBoundsFunction(geometry, &curvedBounds, nullptr);
    rtcSetGeometryIntersectFunction(geometry, &curvedIntersect);
    rtcSetGeometryOccludedFunction(geometry, &curvedOccluded);
    rtcCommitGeometry(geometry);
    return geometry;
}

}  // namespace nemra::core
