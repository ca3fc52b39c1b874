/// A batch of paths from the camera to the film, bounce by bounce: each stage runs over all paths before the next begins.
#pragma once

#include "engine/core/kernel/camera_stage.h"
#include "engine/core/kernel/film_stage.h"
#include "engine/core/kernel/light_stage.h"
#include "engine/core/kernel/surface_stage.h"

namespace nemra::core::NEMRA_KERNEL {

/// Passing through surfaces costs no reflection; this many stages end a path that does nothing else.
constexpr int kMaxStages = 100000;

static void randomStage(const KernelScene& scene, Workspace& w, int count) {
    const std::uint32_t roulette = scene.rouletteDepth > 1 ? static_cast<std::uint32_t>(scene.rouletteDepth) - 1 : 0;
    for (int i = 0; i < count; i += kLanes) {
        const BitsN reversed = load(w.vertexReversed + i);
        const BitsN pixel = load(w.vertexPixel + i);
        const BitsN bounce = load(w.vertexBounce + i);
        const BitsN set = bounce * kSetsPerBounce + kSetFirstBounce;
        const PairBits<BitsN> light = samplePair(reversed, pixel, set + kSetLight);
        const PairBits<BitsN> scatter = samplePair(reversed, pixel, set + kSetScatter);
        store(w.uLight + i, toUnit(light.first));
        store(w.vLight + i, toUnit(light.second));
        store(w.uScatter + i, toUnit(scatter.first));
        store(w.vScatter + i, toUnit(scatter.second));
        // Early bounces of scenes with few lights have nothing to decide.
        if (!scene.lightAlias && laneBits((IntN)(bounce >= roulette)) == 0) continue;
        const PairBits<BitsN> choices = samplePair(reversed, pixel, set + kSetChoices);
        store(w.uChoice + i, toUnit(choices.first));
        store(w.uRoulette + i, toUnit(choices.second));
    }
}

static void scatterStage(Workspace& w, int count) {
    for (int i = 0; i < count; i += kLanes) {
        const VecN n = loadVec(w.nx, w.ny, w.nz, i);
        const VecN g = loadVec(w.gx, w.gy, w.gz, i);
        FloatN cosine;
        const VecN wi = cosineDirection(load(w.uScatter + i), load(w.vScatter + i), n, cosine);
        const IntN above = (dot(wi, g) > 0.0F) & (cosine > 0.0F);
        store(w.wx + i, wi.x);
        store(w.wy + i, wi.y);
        store(w.wz + i, wi.z);
        store(w.wPdf + i, select(above, cosine * kInversePi, splat(0.0F)));
    }
}

struct NextCounts {
    int rays;
    int shadows;
};

/// What the vertices' reflectances do to throughput, shadow rays and next rays.
template <int W>
static NextCounts reflectStage(const KernelScene& scene, const Workspace& workspace, int count, const RayArrays& target,
                               int rays) {
    const Workspace w = workspace;  // copies, which no store can be taken to change
    const RayArrays to = target;
    const SpectralCell* const spectra = scene.spectra;
    const SurfaceRecord* const surfaces = scene.surfaces;
    const auto rouletteDepth = static_cast<std::uint32_t>(scene.rouletteDepth);
    int shadows = 0;
    for (int i = 0; i < count; ++i) {
        const int slot = w.vertexSlot[i];
        const SpectralCell* const reflectance = spectra + surfaces[w.vertexSurface[i]].reflectance;
        const float shadowWeight = w.shadowWeight[i];
        F4 throughput[W / 4];
        float most = 0.0F;
        for (int k = 0; k < W / 4; ++k) {
            const int at = slot * W + 4 * k;
            const F4 position = load4(w.inCell + at);
            throughput[k] = load4(w.throughput + at) * lookUp(reflectance, w.cell + at, position);
            if (shadowWeight > 0.0F) {
                const F4 light = lookUp(spectra + w.lightEmission[i], w.cell + at, position);
                store(w.pending + at, throughput[k] * light * shadowWeight);
            }
            const float here = largest(throughput[k]);
            most = here > most ? here : most;
        }
        if (!(most > 0.0F)) continue;
        const float x = w.px[i], y = w.py[i], z = w.pz[i];
        if (shadowWeight > 0.0F) {
            w.qox[shadows] = x;
            w.qoy[shadows] = y;
            w.qoz[shadows] = z;
            w.qdx[shadows] = w.sx[i];
            w.qdy[shadows] = w.sy[i];
            w.qdz[shadows] = w.sz[i];
            w.shadowSlot[shadows] = slot;
            ++shadows;
        }
        const float pdf = w.wPdf[i];
        if (!(pdf > 0.0F)) continue;
        float boost = 1.0F;
        const std::uint32_t bounce = w.vertexBounce[i] + 1;
        if (bounce >= rouletteDepth) {
            const float q = most < kMostSurvival ? most : kMostSurvival;
            if (!(w.uRoulette[i] < q)) continue;
            boost = 1.0F / q;
        }
        for (int k = 0; k < W / 4; ++k) store(w.throughput + slot * W + 4 * k, throughput[k] * boost);
        to.ox[rays] = x;
        to.oy[rays] = y;
        to.oz[rays] = z;
        to.dx[rays] = w.wx[i];
        to.dy[rays] = w.wy[i];
        to.dz[rays] = w.wz[i];
        to.pdf[rays] = pdf;
        to.slot[rays] = slot;
        to.bounce[rays] = bounce;
        ++rays;
    }
    return {rays, shadows};
}

template <int W>
static void collectStage(const Workspace& workspace, int shadows) {
    const Workspace w = workspace;
    for (int i = 0; i < shadows; ++i) {
        if (w.blocked[i]) continue;
        for (int k = 0; k < W; k += 4) {
            const int at = w.shadowSlot[i] * W + k;
            store(w.radiance + at, load4(w.radiance + at) + load4(w.pending + at));
        }
    }
}

template <int W>
static int renderBatch(const KernelScene& scene, Workspace& w, const Batch& batch, const FilmRecord& film) {
    int count = cameraStage<W>(scene, batch, w);
    int current = 0;
    for (int stage = 0; count > 0 && stage < kMaxStages; ++stage) {
        const RayArrays& from = w.rays[current];
        const RayArrays& to = w.rays[current ^ 1];
        traceClosest(scene, from, count, stage == 0, w);
        const SurfaceCounts met = surfaceStage<W>(scene, w, from, count, to);
        NextCounts next{met.rays, 0};
        if (met.vertices > 0) {
            randomStage(scene, w, met.vertices);
            if (scene.lightCount > 0) {
                lightStage(scene, w, met.vertices);
            } else {
                for (int i = 0; i < met.vertices; ++i) w.shadowWeight[i] = 0.0F;
            }
            scatterStage(w, met.vertices);
            next = reflectStage<W>(scene, w, met.vertices, to, met.rays);
            traceShadows(scene, next.shadows, w);
            collectStage<W>(w, next.shadows);
        }
        count = next.rays;
        current ^= 1;
    }
    return filmStage<W>(scene, batch, w, film);
}

NEMRA_INLINE int renderAny(const KernelScene& scene, Workspace& w, const Batch& batch, const FilmRecord& film) {
    return scene.wavelengths == 8 ? renderBatch<8>(scene, w, batch, film) : renderBatch<4>(scene, w, batch, film);
}

}  // namespace nemra::core::NEMRA_KERNEL
