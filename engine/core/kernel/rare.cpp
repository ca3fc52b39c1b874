#include "engine/core/kernel/rare.h"

#include <algorithm>
#include <cmath>

#include "engine/core/bsdf/bsdf.h"
#include "engine/core/geometry/world.h"
#include "engine/core/kernel/workspace.h"

namespace nemra::core {

namespace {

Vec3 widen(const float v[3]) { return {v[0], v[1], v[2]}; }

void narrow(const Vec3& v, float out[3]) {
    for (int i = 0; i < 3; ++i) out[i] = static_cast<float>(v[i]);
}

void resolveCurved(const KernelScene& scene, const CurvedRecord& shape, const float origin[3], const float direction[3], float t,
                   SurfacePoint& point) {
    const Vec3 position = shape.snapped(widen(origin) + widen(direction) * t);
    const Vec3 normal = shape.normal(position);
    narrow(position, point.position);
    narrow(normal, point.geometric);
    narrow(normal, point.shading);
    point.offset = static_cast<float>(shape.offset);
    point.surface = shape.surface;
    point.lightPdf = shape.light >= 0 && scene.surfaces[shape.surface].emits
                         ? static_cast<float>(shape.pick * curvedPdf(shape, widen(origin), position, normal))
                         : 0.0F;
}

void resolveInstance(const InstanceRecord& instance, std::uint32_t inner, const float direction[3], float distance, float u,
                     float v, SurfacePoint& point) {
    const TriangleRecord& t = instance.mesh->triangles[inner];
    const Vec3 own = widen(t.v0) + widen(t.e1) * u + widen(t.e2) * v;
    narrow(instance.toWorld.point(own), point.position);
    narrow(normalized(instance.toObject.transposed(widen(t.ng))), point.geometric);
    Vec3 shading = widen(t.ng);
    if (t.normals >= 0) {
        const NormalsRecord& n = instance.mesh->normals[t.normals];
        shading = widen(n.n[0]) * (1.0 - u - v) + widen(n.n[1]) * u + widen(n.n[2]) * v;
    }
    narrow(normalized(instance.toObject.transposed(shading)), point.shading);
    point.offset = instance.offset;
    point.surface = instance.surface;
    point.lightPdf = 0.0F;
    if (instance.pick > 0.0) {  // density per area to density per solid angle
        const double cosine = std::abs(dot(widen(point.geometric), widen(direction)));
        const double away = distance;
        point.lightPdf = static_cast<float>(instance.lightPdf(inner) * away * away / std::max(cosine, 1.0e-12));
    }
}

}  // namespace

void resolveRareHit(const KernelScene& scene, std::uint32_t hit, std::uint32_t inner, const float origin[3],
                    const float direction[3], float t, float u, float v, SurfacePoint& point) {
    if ((hit & kInstanceHit) == kInstanceHit) {
        resolveInstance(scene.instances[hit & ~kInstanceHit], inner, direction, t, u, v, point);
    } else {
        resolveCurved(scene, scene.curved[hit & ~kCurvedHit], origin, direction, t, point);
    }
}

bool sampleCurvedLight(const KernelScene& scene, const LightRecord& light, const float reference[3], float u, float v,
                       float position[3], float normal[3], float& pdf) {
    const CurvedRecord& shape = scene.curved[light.curved];
    const CurvedSample sample = sampleCurved(shape, widen(reference), u, v);
    if (!(sample.pdf > 0.0)) return false;
    narrow(sample.point, position);
    narrow(sample.normal, normal);
    pdf = static_cast<float>(sample.pdf * shape.pick);
    return true;
}

void sampleInstancedLight(const KernelScene& scene, const LightRecord& light, std::uint32_t part, float u, float v,
                          float position[3], float normal[3], float& pdf) {
    const InstanceRecord& instance = scene.instances[light.instance];
    const std::uint32_t chosen = instance.mesh->shares.pick(part);
    const TriangleRecord& t = instance.mesh->triangles[chosen];
    const double root = std::sqrt(static_cast<double>(u));
    narrow(instance.toWorld.point(widen(t.v0) + widen(t.e1) * (1.0 - root) + widen(t.e2) * (v * root)), position);
    narrow(normalized(instance.toObject.transposed(widen(t.ng))), normal);
    pdf = static_cast<float>(instance.lightPdf(chosen));
}

void scatterRare(const KernelScene& scene, const SurfaceRecord& surface, const float direction[3], const float shading[3],
                 const float geometric[3], const std::int32_t* cells, const float* inCell, const float random[3],
                 RareScatter& result) {
    ScatterQuery query{};
    for (int i = 0; i < 3; ++i) {
        query.wo[i] = -direction[i];
        query.normal[i] = shading[i];
        query.geometric[i] = geometric[i];
        query.u[i] = random[i];
    }
    query.spectra = scene.spectra;
    query.cells = cells;
    query.inCell = inCell;
    query.wavelengths = scene.wavelengths;
    Scattering scattering;
    surface.bsdf->sample(query, scattering);
    result.goesOn = scattering.kind != Scattering::Kind::absorbed;
    result.passed = scattering.kind == Scattering::Kind::passes;
    for (int i = 0; i < 3; ++i) result.wi[i] = result.passed ? direction[i] : scattering.wi[i];
    for (int k = 0; k < 8; ++k) result.weight[k] = scattering.weight[k];
}

}  // namespace nemra::core
