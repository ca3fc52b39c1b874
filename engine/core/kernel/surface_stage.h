/// From hits to vertices: light that surfaces and surroundings give off, and where paths go on.
#pragma once

#include "engine/core/kernel/rare.h"
#include "engine/core/kernel/sampler.h"
#include "engine/core/kernel/spectral.h"
#include "engine/core/kernel/workspace.h"

namespace nemra::core::NEMRA_KERNEL {

/// radiance += throughput * table * scale
template <int W>
NEMRA_INLINE void addLight(const KernelScene& scene, const Workspace& w, int slot, std::int32_t table, float scale) {
    for (int k = 0; k < W; k += 4) {
        const int at = slot * W + k;
        const F4 light = lookUp(scene.spectra + table, w.cell + at, load4(w.inCell + at));
        store(w.radiance + at, load4(w.radiance + at) + load4(w.throughput + at) * light * scale);
    }
}

/// Paths live on past the roulette depth with the chance of their throughput, but never surely: a lossless room must come to an
/// end.
constexpr float kMostSurvival = 0.95F;
template <int W>
NEMRA_INLINE float survival(const float* throughput) {
    float most = largest(load4(throughput));
    if constexpr (W == 8) {
        const float other = largest(load4(throughput + 4));
        most = most > other ? most : other;
    }
    return most < kMostSurvival ? most : kMostSurvival;
}

NEMRA_INLINE bool pastDepth(const KernelScene& scene, std::uint32_t bounce) {
    return scene.maxDepth > 0 && bounce >= static_cast<std::uint32_t>(scene.maxDepth);
}

NEMRA_INLINE void putRay(const RayArrays& rays, int at, const float origin[3], const float direction[3], float pdf,
                         std::int32_t slot, std::uint32_t bounce) {
    rays.ox[at] = origin[0];
    rays.oy[at] = origin[1];
    rays.oz[at] = origin[2];
    rays.dx[at] = direction[0];
    rays.dy[at] = direction[1];
    rays.dz[at] = direction[2];
    rays.pdf[at] = pdf;
    rays.slot[at] = slot;
    rays.bounce[at] = bounce;
}

/// A surface that isn't one of the fast path's. True if the path goes on; then its next ray is put at `at`.
template <int W>
static bool rareStage(const KernelScene& scene, const Workspace& w, const SurfaceRecord& surface, const RayArrays& from, int ray,
                      const SurfacePoint& point, float side, const RayArrays& to, int at) {
    const int slot = from.slot[ray];
    const std::uint32_t bounce = from.bounce[ray];
    const float direction[3] = {from.dx[ray], from.dy[ray], from.dz[ray]};
    float shading[3], geometric[3];
    for (int c = 0; c < 3; ++c) {
        shading[c] = side * point.shading[c];
        geometric[c] = side * point.geometric[c];
    }
    const std::uint32_t set = kSetFirstBounce + kSetsPerBounce * bounce;
    const PairBits<std::uint32_t> scatter = samplePair(w.reversed[slot], w.pixel[slot], set + kSetScatter);
    const PairBits<std::uint32_t> choices = samplePair(w.reversed[slot], w.pixel[slot], set + kSetChoices);
    const float random[3] = {(scatter.first >> 8) * 0x1p-24F, (scatter.second >> 8) * 0x1p-24F, (choices.first >> 8) * 0x1p-24F};
    RareScatter result;
    scatterRare(scene, surface, direction, shading, geometric, w.cell + slot * W, w.inCell + slot * W, random, result);
    if (!result.goesOn || (!result.passed && pastDepth(scene, bounce))) return false;
    float cosine = 0.0F;
    for (int c = 0; c < 3; ++c) cosine += result.wi[c] * geometric[c];
    float origin[3];
    for (int c = 0; c < 3; ++c) origin[c] = point.position[c] + geometric[c] * (cosine < 0.0F ? -point.offset : point.offset);
    if (result.passed) {
        // The density that chose the direction still stands; it is a camera ray as long as it was one.
        putRay(to, at, origin, direction, from.pdf[ray], slot, bounce);
        return true;
    }
    float* throughput = w.throughput + slot * W;
    for (int k = 0; k < W; k += 4) store(throughput + k, load4(throughput + k) * load4(result.weight + k));
    if (bounce + 1 >= static_cast<std::uint32_t>(scene.rouletteDepth)) {
        const float q = survival<W>(throughput);
        if (!((choices.second >> 8) * 0x1p-24F < q)) return false;
        for (int k = 0; k < W; k += 4) store(throughput + k, load4(throughput + k) * (1.0F / q));
    }
    putRay(to, at, origin, result.wi, -1.0F, slot, bounce + 1);
    return true;
}

struct SurfaceCounts {
    int vertices = 0;  ///< of the diffuse path
    int rays = 0;      ///< that go on from rare surfaces
};

template <int W>
static SurfaceCounts surfaceStage(const KernelScene& scene, Workspace& workspace, const RayArrays& source, int count,
                                  const RayArrays& to) {
    const Workspace w = workspace;  // copies, which no store can be taken to change
    const RayArrays from = source;
    const TriangleRecord* const triangles = scene.triangles;
    const SurfaceRecord* const surfaces = scene.surfaces;
    SurfaceCounts done;
    for (int i = 0; i < count; ++i) {
        const std::uint32_t hit = w.hit[i];
        const int slot = from.slot[i];
        if (hit == kMiss) {
            if (scene.environment >= 0) addLight<W>(scene, w, slot, scene.environment, 1.0F);
            continue;
        }
        const F4 direction = {from.dx[i], from.dy[i], from.dz[i], 0.0F};
        const float t = w.hitT[i];
        const float chosen = from.pdf[i];
        F4 position, geometric, shading;
        float offset, lightPdf;
        std::uint32_t surfaceIndex;
        float facing;  // cosine between the front side and where the ray came from
        if (__builtin_expect(hit < kCurvedHit, 1)) {
            const TriangleRecord& record = triangles[hit];
            const float u = w.hitU[i];
            const float v = w.hitV[i];
            position = load4(record.v0) + load4(record.e1) * u + load4(record.e2) * v;
            geometric = load4(record.ng);
            offset = record.offset;
            surfaceIndex = record.surface;
            facing = -dot3(geometric, direction);
            shading = geometric;
            if (record.normals >= 0) {
                const NormalsRecord& n = scene.normals[record.normals];
                const float s = 1.0F - u - v;
                float mixed[3];
                for (int c = 0; c < 3; ++c) mixed[c] = s * n.n[0][c] + u * n.n[1][c] + v * n.n[2][c];
                shading = F4{mixed[0], mixed[1], mixed[2], 0.0F};
                shading *= 1.0F / __builtin_sqrtf(dot3(shading, shading));
            }
            // Density per area to density per solid angle.
            const float cosine = facing < 0.0F ? -facing : facing;
            lightPdf = record.lightPdf > 0.0F ? record.lightPdf * t * t / (cosine > 1.0e-12F ? cosine : 1.0e-12F) : 0.0F;
        } else {
            SurfacePoint point;
            const float origin[3] = {from.ox[i], from.oy[i], from.oz[i]};
            const float along[3] = {direction[0], direction[1], direction[2]};
            resolveRareHit(scene, hit, w.hitInner[i], origin, along, t, w.hitU[i], w.hitV[i], point);
            position = F4{point.position[0], point.position[1], point.position[2], 0.0F};
            geometric = F4{point.geometric[0], point.geometric[1], point.geometric[2], 0.0F};
            shading = F4{point.shading[0], point.shading[1], point.shading[2], 0.0F};
            offset = point.offset;
            surfaceIndex = point.surface;
            lightPdf = point.lightPdf;
            facing = -dot3(geometric, direction);
        }
        if (from.bounce[i] == 0 && w.firstDistance[slot] < 0.0F) w.firstDistance[slot] = t;
        const SurfaceRecord& surface = surfaces[surfaceIndex];
        if (surface.emits & (facing > 0.0F ? kEmitsFront : kEmitsBack)) {
            // Power heuristic (Veach 1997) against having picked this light on purpose.
            const float ratio = lightPdf / chosen;
            const float mis = chosen > 0.0F ? 1.0F / (1.0F + ratio * ratio) : 1.0F;
            addLight<W>(scene, w, slot, surface.emission, surface.emissionScale * mis);
        }
        const float side = facing < 0.0F ? -1.0F : 1.0F;
        if (__builtin_expect(surface.kind == SurfaceKind::lambertian, 1)) {
            if (pastDepth(scene, from.bounce[i])) continue;
            geometric *= side;
            shading *= side;
            if (!(dot3(shading, direction) < 0.0F)) shading = geometric;  // an interpolated normal that turns away can't be lit
            position += geometric * offset;
            const int m = done.vertices++;
            w.px[m] = position[0];
            w.py[m] = position[1];
            w.pz[m] = position[2];
            w.gx[m] = geometric[0];
            w.gy[m] = geometric[1];
            w.gz[m] = geometric[2];
            w.nx[m] = shading[0];
            w.ny[m] = shading[1];
            w.nz[m] = shading[2];
            w.vertexSlot[m] = slot;
            w.vertexSurface[m] = static_cast<std::int32_t>(surfaceIndex);
            w.vertexBounce[m] = from.bounce[i];
            w.vertexReversed[m] = w.reversed[slot];
            w.vertexPixel[m] = w.pixel[slot];
        } else if (surface.kind == SurfaceKind::generic) {
            SurfacePoint point{};
            for (int c = 0; c < 3; ++c) {
                point.position[c] = position[c];
                point.geometric[c] = geometric[c];
                point.shading[c] = shading[c];
            }
            point.offset = offset;
            if (rareStage<W>(scene, w, surface, from, i, point, side, to, done.rays)) ++done.rays;
        }
    }
    return done;
}

}  // namespace nemra::core::NEMRA_KERNEL
