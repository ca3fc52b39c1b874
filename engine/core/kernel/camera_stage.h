/// The first rays of a batch, and the wavelengths of its paths.
#pragma once

#include "engine/core/kernel/sampler.h"
#include "engine/core/kernel/spectral.h"
#include "engine/core/kernel/trace.h"
#include "engine/core/kernel/warp.h"
#include "engine/core/kernel/workspace.h"

namespace nemra::core::NEMRA_KERNEL {

/// Fills slots [0, pixels * samples) and as many rays; returns their number.
template <int W>
static int cameraStage(const KernelScene& scene, const Batch& batch, Workspace& w) {
    const CameraRecord& view = scene.view;
    float* const pixelX = w.px;  // free until the first surface
    float* const pixelY = w.py;
    int count = 0;
    for (int p = 0; p < batch.pixels; ++p) {
        const int local = batch.firstPixel + p;
        const int x = batch.x0 + local / batch.tileHeight;
        const int y = batch.y0 + local % batch.tileHeight;
        const std::uint32_t seed = pixelSeed(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), scene.seed);
        for (std::uint32_t s = 0; s < batch.samples; ++s, ++count) {
            pixelX[count] = static_cast<float>(x);
            pixelY[count] = static_cast<float>(y);
            w.pixel[count] = seed;
            w.reversed[count] = batch.firstSample + s;
        }
    }
    const RayArrays& rays = w.rays[0];
    for (int i = 0; i < count; i += kLanes) {
        const BitsN reversed = reverseBits(load(w.reversed + i));
        const BitsN pixel = load(w.pixel + i);
        store(w.reversed + i, reversed);
        const PairBits<BitsN> inPixel = samplePair(reversed, pixel, splatBits(kSetPixel));
        const FloatN fx = load(pixelX + i) + toUnit(inPixel.first);
        const FloatN fy = load(pixelY + i) + toUnit(inPixel.second);
        VecN origin = splat(view.position);
        VecN direction = splat(view.corner) + splat(view.stepX) * fx + splat(view.stepY) * fy;
        if (view.lensRadius > 0.0F) {
            const PairBits<BitsN> onLens = samplePair(reversed, pixel, splatBits(kSetLens));
            FloatN lx, ly;
            toDisc(toUnit(onLens.first), toUnit(onLens.second), lx, ly);
            const VecN shift = splat(view.right) * (lx * view.lensRadius) + splat(view.up) * (ly * view.lensRadius);
            origin = origin + shift;
            direction = direction * splat(view.focusFactor) - shift;
        }
        direction = direction * (1.0F / squareRoot(dot(direction, direction)));
        store(rays.ox + i, origin.x);
        store(rays.oy + i, origin.y);
        store(rays.oz + i, origin.z);
        store(rays.dx + i, direction.x);
        store(rays.dy + i, direction.y);
        store(rays.dz + i, direction.z);
        store(rays.pdf + i, splat(-1.0F));
        for (int lane = 0; lane < kLanes; ++lane) rays.slot[i + lane] = i + lane;
        store(rays.bounce + i, splatBits(0));
        store(w.firstDistance + i, splat(-1.0F));
        alignas(64) std::uint32_t bits[kLanes];
        store(bits, samplePair(reversed, pixel, splatBits(kSetWavelength)).first);
        for (int lane = 0; lane < kLanes; ++lane) {
            const int at = (i + lane) * W;
            drawWavelengths<W>(scene, bits[lane], w.cell + at, w.inCell + at, w.weight + at);
            for (int k = 0; k < W; k += 4) {
                store(w.throughput + at + k, splat4(1.0F));
                store(w.radiance + at + k, splat4(0.0F));
            }
        }
    }
    return count;
}

}  // namespace nemra::core::NEMRA_KERNEL
