/// How the wavelengths of a path are drawn: densely where the sensor answers and the lights shine.
#pragma once

#include <vector>

#include "engine/core/sensor/sensor.h"

namespace nemra::core {

/// The inverse of the cumulative distribution, piecewise linear over equal steps of the random number, so that drawing is one
/// look-up and the density of what is drawn is known exactly.
struct WavelengthSampling {
    /// Positions on the grid, in cells; ascending from 0 to the number of cells.
    std::vector<float> knots;
};

/// `light[cell]`: relative spectral radiance of the lights together (empty or all zero: as if flat).
/// A share of the samples ignores the lights, so that no wavelength is starved where reflectances differ from what lights suggest.
WavelengthSampling makeWavelengthSampling(const Sensor& sensor, const std::vector<double>& light);

}  // namespace nemra::core
