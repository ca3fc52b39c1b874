/// A batch of paths from the camera to the film, bounce by bounce: each stage runs over all paths before the next begins.
#pragma once

#include "engine/core/kernel/camera_stage.h"
#include "engine/core/kernel/film_stage.h"
#include "engine/core/kernel/light_stage.h"
#include "engine/core/kernel/surface_stage.h"

namespace nemra::core::NEMRA_KERNEL {

/// Passing through surfaces costs no reflection; this many stages end a path that does nothing else.
constexpr int kMaxStages = 100000;

static void randomStage(Workspace& w, int count) {
    for (int i = 0; i < count; i += kLanes) {
        const U8 reversed = load(w.vertexReversed + i);
        const U8 pixel = load(w.vertexPixel + i);
        const U8 set = load(w.vertexBounce + i) * kSetsPerBounce + kSetFirstBounce;
        const PairBits<U8> light = samplePair(reversed, pixel, set + kSetLight);
        const PairBits<U8> scatter = samplePair(reversed, pixel, set + kSetScatter);
        const PairBits<U8> choices = samplePair(reversed, pixel, set + kSetChoices);
        store(w.uLight + i, toUnit(light.first));
        store(w.vLight + i, toUnit(light.second));
        store(w.uScatter + i, toUnit(scatter.first));
        store(w.vScatter + i, toUnit(scatter.second));
        store(w.wx + i, toUnit(choices.first));  // free until the scatter stage
        store(w.uRoulette + i, toUnit(choices.second));
    }
}

static void scatterStage(Workspace& w, int count) {
    for (int i = 0; i < count; i += kLanes) {
        const Vec8 n = loadVec(w.nx, w.ny, w.nz, i);
        const Vec8 g = loadVec(w.gx, w.gy, w.gz, i);
        F8 cosine;
        const Vec8 wi = cosineDirection(load(w.uScatter + i), load(w.vScatter + i), n, cosine);
        const I8 above = (dot(wi, g) > 0.0F) & (cosine > 0.0F);
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
static NextCounts reflectStage(const KernelScene& scene, Workspace& w, int count, const RayArrays& to, int rays) {
    int shadows = 0;
    for (int i = 0; i < count; ++i) {
        const int slot = w.vertexSlot[i];
        const SurfaceRecord& surface = scene.surfaces[w.vertexSurface[i]];
        const float shadowWeight = w.shadowWeight[i];
        F4 throughput[W / 4];
        float most = 0.0F;
        for (int k = 0; k < W / 4; ++k) {
            const int at = slot * W + 4 * k;
            const F4 position = load4(w.inCell + at);
            throughput[k] = load4(w.throughput + at) * lookUp(scene.spectra + surface.reflectance, w.cell + at, position);
            if (shadowWeight > 0.0F) {
                const F4 light = lookUp(scene.spectra + w.lightEmission[i], w.cell + at, position);
                store(w.pending + at, throughput[k] * light * shadowWeight);
            }
            const float here = largest(throughput[k]);
            most = here > most ? here : most;
        }
        if (shadowWeight > 0.0F && most > 0.0F) {
            w.qox[shadows] = w.px[i];
            w.qoy[shadows] = w.py[i];
            w.qoz[shadows] = w.pz[i];
            w.qdx[shadows] = w.sx[i];
            w.qdy[shadows] = w.sy[i];
            w.qdz[shadows] = w.sz[i];
            w.shadowSlot[shadows] = slot;
            ++shadows;
        }
        if (!(w.wPdf[i] > 0.0F) || !(most > 0.0F)) continue;
        float boost = 1.0F;
        const std::uint32_t bounce = w.vertexBounce[i] + 1;
        if (bounce >= static_cast<std::uint32_t>(scene.rouletteDepth)) {
            const float q = most < 0.95F ? most : 0.95F;
            if (!(w.uRoulette[i] < q)) continue;
            boost = 1.0F / q;
        }
        for (int k = 0; k < W / 4; ++k) store(w.throughput + slot * W + 4 * k, throughput[k] * boost);
        to.ox[rays] = w.px[i];
        to.oy[rays] = w.py[i];
        to.oz[rays] = w.pz[i];
        to.dx[rays] = w.wx[i];
        to.dy[rays] = w.wy[i];
        to.dz[rays] = w.wz[i];
        to.pdf[rays] = w.wPdf[i];
        to.slot[rays] = slot;
        to.bounce[rays] = bounce;
        ++rays;
    }
    return {rays, shadows};
}

template <int W>
static void collectStage(Workspace& w, int shadows) {
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
            randomStage(w, met.vertices);
            if (scene.lightCount > 0) {
                lightStage(scene, w, met.vertices, w.wx);
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
