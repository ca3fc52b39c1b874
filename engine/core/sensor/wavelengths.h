/// How the wavelengths of a path are drawn: densely where the sensor answers and the lights shine.
#pragma once

#include <vector>

#include "engine/core/kernel/kernel_scene.h"
#include "engine/core/sensor/sensor.h"

namespace nemra::core {

/// The inverse of the cumulative distribution, piecewise linear over equal steps of the random number, so that drawing is a
/// look-up and the density of what is drawn is known exactly. Steps that reach over several cells of the grid, as those in the
/// tails of a response do, are cut once more.
struct WavelengthSampling {
    /// Position on the grid at the start of each step, in cells, and rise over the step. A negative rise: the step is cut into
    /// kSubSteps, which begin at index `value`.
    std::vector<SpectralCell> steps;
    int stepCount = 0;  ///< of the steps that aren't parts of others
};

/// `light[cell]`: relative spectral radiance of the lights together (empty or all zero: as if flat). Boxes get even shares.
WavelengthSampling makeWavelengthSampling(const Sensor& sensor, const std::vector<double>& light);

}  // namespace nemra::core
