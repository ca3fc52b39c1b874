/// Sums over the spectral channels of a result.
#pragma once

#include <vector>

#include "engine/core/output/picture.h"
#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

bool hasSpectralChannels(const Film& film);

/// For each spectral channel the integral of the response over its band, nm, as its value is the mean spectral radiance of the
/// band; 0 for other channels.
std::vector<double> bandWeights(const Film& film, const SpectralCurve& response);

/// Sum of weight times value over the channels for each pixel, rows from the top.
std::vector<float> weighedSum(const Film& film, const LightView& view, const std::vector<double>& weights);

}  // namespace nemra::core
