/// Curves through measured samples.
#pragma once

#include <string_view>
#include <utility>
#include <vector>

#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

enum class Interpolation { linear, nearest, cubic };

/// By the name of the option that chooses it.
Interpolation interpolationByName(std::string_view option);

/// Rows of wavelength in nm and value, made fit for sampledCurve: in order of wavelength, without those whose wavelength isn't
/// positive or whose value isn't finite, and of several at one wavelength the first alone. One warning for each that had to be
/// done; it names `node`.
std::vector<std::pair<double, double>> cleanSamples(const std::vector<double>& wavelengths, const std::vector<double>& values,
                                                    const node::Node& node, Translation& translation);

/// The curve through at least one clean sample: straight lines between two, or the value of the nearest, or the monotone cubic of
/// Fritsch and Butland (1984). Outside, the first and the last value hold, or it is zero; a single sample that doesn't hold is
/// zero everywhere.
SpectralCurve sampledCurve(const std::vector<std::pair<double, double>>& samples, Interpolation interpolation, bool hold);

}  // namespace nemra::core
