/// Next event: a point on a light for each vertex, and how much its light counts against finding it by chance.
#pragma once

#include "engine/core/kernel/rare.h"
#include "engine/core/kernel/sampler.h"
#include "engine/core/kernel/trace.h"
#include "engine/core/kernel/warp.h"
#include "engine/core/kernel/workspace.h"

namespace nemra::core::NEMRA_KERNEL {

constexpr float kInversePi = 0.318309886183790672F;

/// Which light each lane takes; with few lights, `u` becomes what is left of it once the choice is made.
NEMRA_INLINE IntN chooseLights(const KernelScene& scene, FloatN& u, FloatN extra) {
    const int count = scene.lightCount;
    IntN chosen = splatInt(0);
    if (count == 1) return chosen;
    if (!scene.lightAlias) {
        FloatN from = splat(0.0F);
        FloatN width = splat(scene.lightBelow[1]);
        for (int k = 1; k < count; ++k) {
            const float border = scene.lightBelow[k];
            const IntN past = u >= border;
            from = select(past, splat(border), from);
            width = select(past, splat(scene.lightBelow[k + 1] - border), width);
            chosen = select(past, splatInt(k), chosen);
        }
        u = smaller((u - from) / width, splat(0x1.fffffep-1F));
        return chosen;
    }
    const FloatN place = extra * static_cast<float>(count);
    const IntN entry = truncated(place);
    const FloatN rest = place - toFloat(entry);
    for (int lane = 0; lane < kLanes; ++lane) {
        const int e = entry[lane] < count ? entry[lane] : count - 1;
        const AliasEntry& alias = scene.lightAlias[e];
        chosen[lane] = rest[lane] < alias.threshold ? e : alias.other;
    }
    return chosen;
}

/// For vertices [0, count): the way to the chosen point and its weight, which is reflected radiance over light radiance and
/// reflectance; 0 where there is nothing to gain.
static void lightStage(const KernelScene& scene, Workspace& w, int count) {
    for (int i = 0; i < count; i += kLanes) {
        const VecN p = loadVec(w.px, w.py, w.pz, i);
        const VecN n = loadVec(w.nx, w.ny, w.nz, i);
        const VecN g = loadVec(w.gx, w.gy, w.gz, i);
        FloatN u = load(w.uLight + i);
        const FloatN v = load(w.vLight + i);
        const IntN chosen = chooseLights(scene, u, load(w.uChoice + i));
        VecN v0{}, e1{}, e2{}, nl{};
        FloatN pdfArea{}, offset{}, scale{};
        IntN emits{}, emission{};
        for (int lane = 0; lane < kLanes; ++lane) {
            const LightRecord& light = scene.lights[chosen[lane]];
            v0.x[lane] = light.v0[0], v0.y[lane] = light.v0[1], v0.z[lane] = light.v0[2];
            e1.x[lane] = light.e1[0], e1.y[lane] = light.e1[1], e1.z[lane] = light.e1[2];
            e2.x[lane] = light.e2[0], e2.y[lane] = light.e2[1], e2.z[lane] = light.e2[2];
            nl.x[lane] = light.n[0], nl.y[lane] = light.n[1], nl.z[lane] = light.n[2];
            pdfArea[lane] = light.pdf;
            offset[lane] = light.offset;
            scale[lane] = light.scale;
            emits[lane] = light.emits;
            emission[lane] = light.emission;
        }
        const FloatN root = squareRoot(u);
        VecN q = v0 + e1 * (1.0F - root) + e2 * (v * root);
        FloatN solid = splat(-1.0F);  // density per solid angle where it is known directly
        if (scene.rareLights) {
            for (int lane = 0; lane < kLanes; ++lane) {
                const LightRecord& light = scene.lights[chosen[lane]];
                if (light.curved < 0 && light.instance < 0) continue;
                const float reference[3] = {p.x[lane], p.y[lane], p.z[lane]};
                float position[3] = {}, normal[3] = {}, pdf = 0.0F;
                if (light.curved >= 0) {
                    sampleCurvedLight(scene, light, reference, u[lane], v[lane], position, normal, pdf);
                    solid[lane] = pdf;
                } else {
                    const std::uint32_t set = kSetFirstBounce + kSetsPerBounce * w.vertexBounce[i + lane] + kSetPartOfLight;
                    const std::uint32_t part = samplePair(w.vertexReversed[i + lane], w.vertexPixel[i + lane], set).first;
                    sampleInstancedLight(scene, light, part, u[lane], v[lane], position, normal, pdf);
                    pdfArea[lane] = pdf;
                }
                q.x[lane] = position[0], q.y[lane] = position[1], q.z[lane] = position[2];
                nl.x[lane] = normal[0], nl.y[lane] = normal[1], nl.z[lane] = normal[2];
            }
        }
        // End the shadow ray off the light, on the vertex's side.
        const FloatN behind = dot(nl, q - p);
        q = q - nl * flipSign(offset, behind);
        const VecN way = q - p;
        const FloatN distance2 = dot(way, way);
        const VecN wi = way * (1.0F / squareRoot(distance2));
        const FloatN cosLight = -dot(nl, wi);
        const FloatN cosine = dot(n, wi);
        const FloatN sideways = dot(g, wi);
        const IntN shines = select(cosLight > 0.0F, emits & kEmitsFront, emits & kEmitsBack) != 0;
        FloatN pdfLight = pdfArea * distance2 / magnitude(cosLight);
        if (scene.rareLights) pdfLight = select(solid >= 0.0F, solid, pdfLight);
        const FloatN pdfScatter = cosine * kInversePi;
        const FloatN ratio = pdfScatter / pdfLight;
        const FloatN weight = pdfScatter * scale / (pdfLight + pdfScatter * ratio);
        const IntN useful = shines & (cosine > 0.0F) & (sideways > 0.0F) & (distance2 > 0.0F) & (pdfLight > 0.0F);
        store(w.shadowWeight + i, select(useful, weight, splat(0.0F)));
        store(w.sx + i, way.x);
        store(w.sy + i, way.y);
        store(w.sz + i, way.z);
        store(w.lightEmission + i, emission);
    }
}

}  // namespace nemra::core::NEMRA_KERNEL
