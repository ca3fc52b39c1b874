/// From a path's radiance at its wavelengths to sums in the film.
#pragma once

#include "engine/core/film/square_sums.h"
#include "engine/core/kernel/simd.h"
#include "engine/core/kernel/workspace.h"

namespace nemra::core::NEMRA_KERNEL {

template <int W>
NEMRA_INLINE bool allFinite(const float* radiance) {
    F4 zero = load4(radiance) * 0.0F;
    if constexpr (W == 8) zero += load4(radiance + 4) * 0.0F;
    return zero[0] + zero[1] + zero[2] + zero[3] == 0.0F;
}

/// Cuts a value into a multiple of the coarse quantum and one of the fine; sums of each are exact.
NEMRA_INLINE void addRounded(const SensorRecord& sensor, double value, double& high, double& low) {
    const double h = (value + sensor.coarse) - sensor.coarse;
    high += h;
    low += ((value - h) + sensor.fine) - sensor.fine;
}

/// One sample into the channels of a sensor with response curves. Returns the value of the leading channel, or the mean of all.
template <int W>
NEMRA_INLINE float addResponses(const SensorRecord& sensor, const Workspace& w, int slot, double* high, double* low) {
    float leading = 0.0F;
    for (int g = 0; g < sensor.groups; ++g) {
        F4 sum = splat4(0.0F);
        for (int k = 0; k < W; ++k) {
            const int at = slot * W + k;
            const float* response = sensor.responses + (static_cast<std::size_t>(w.cell[at]) * sensor.groups + g) * (2 * kGroup);
            sum += (load4(response) + load4(response + kGroup) * w.inCell[at]) * (w.radiance[at] * w.weight[at]);
        }
        const D4 value = __builtin_convertvector(sum, D4);
        const D4 h = (value + sensor.coarse) - sensor.coarse;
        const D4 l = ((value - h) + sensor.fine) - sensor.fine;
        const int first = g * kGroup;
        const int here = sensor.channels - first < kGroup ? sensor.channels - first : kGroup;
        for (int c = 0; c < here; ++c) {
            high[first + c] += h[c];
            low[first + c] += l[c];
        }
        if (sensor.leading >= first && sensor.leading < first + kGroup) leading = sum[sensor.leading - first];
        if (sensor.leading < 0) leading += sum[0] + sum[1] + sum[2] + sum[3];  // where there is no channel, responses are 0
    }
    return sensor.leading < 0 ? leading / static_cast<float>(sensor.channels) : leading;
}

/// One sample into a box sensor. Returns the mean of the boxes.
template <int W>
NEMRA_INLINE float addBoxes(const SensorRecord& sensor, const Workspace& w, int slot, double* high, double* low) {
    float total = 0.0F;
    for (int k = 0; k < W; ++k) {
        const int at = slot * W + k;
        const int box = sensor.boxOf[w.cell[at]];
        const float value = w.radiance[at] * w.weight[at] * sensor.boxWeight;
        addRounded(sensor, value, high[box], low[box]);
        total += value;
    }
    return total / static_cast<float>(sensor.channels);
}

/// Returns the number of samples that were dropped.
template <int W>
static int filmStage(const KernelScene& scene, const Batch& batch, const Workspace& w, const FilmRecord& film) {
    const SensorRecord& sensor = scene.sensor;
    int wrong = 0;
    int slot = 0;
    for (int p = 0; p < batch.pixels; ++p) {
        const int local = batch.firstPixel + p;
        const int x = batch.x0 + local / batch.tileHeight;
        const int y = batch.y0 + local % batch.tileHeight;
        const std::size_t pixel = static_cast<std::size_t>(x - film.left) * film.height + (y - film.top);
        double* const high = film.high + pixel * sensor.channels;
        double* const low = film.low + pixel * sensor.channels;
        SquareSum squares{film.squaresUpper[pixel], film.squaresLower[pixel], film.squaresPart[pixel]};
        double depth = film.depth[pixel];
        std::uint32_t kept = 0;
        std::uint32_t met = 0;
        for (std::uint32_t s = 0; s < batch.samples; ++s, ++slot) {
            if (!allFinite<W>(w.radiance + slot * W)) {
                ++wrong;
                continue;
            }
            const float leading =
                sensor.groups > 0 ? addResponses<W>(sensor, w, slot, high, low) : addBoxes<W>(sensor, w, slot, high, low);
            add(squares, squareSum(static_cast<double>(leading) * static_cast<double>(leading)));
            if (w.firstDistance[slot] >= 0.0F) {
                depth += (w.firstDistance[slot] + sensor.depth) - sensor.depth;
                ++met;
            }
            ++kept;
        }
        film.squaresUpper[pixel] = squares.upper;
        film.squaresLower[pixel] = squares.lower;
        film.squaresPart[pixel] = static_cast<std::uint8_t>(squares.part);
        film.depth[pixel] = depth;
        film.samples[pixel] += kept;
        film.depthSamples[pixel] += met;
    }
    return wrong;
}

}  // namespace nemra::core::NEMRA_KERNEL
