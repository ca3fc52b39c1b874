/// What a pixel collects: channels, and how a wavelength's radiance counts in each.
#pragma once

#include <vector>

#include "engine/core/film/film.h"
#include "engine/core/spectrum/grid.h"

namespace nemra::core {

struct Sensor {
    std::vector<Channel> channels;
    /// The wavelengths that the sensor answers to, cut into cells fine enough for it.
    SpectralGrid grid;
    /// Response of each channel: its value is the integral of response times spectral radiance. Empty for a box sensor.
    std::vector<SpectralCurve> responses;
    /// Box sensor: channel i is the mean over cells [i cellsPerBox, (i + 1) cellsPerBox); 0 for others.
    int cellsPerBox = 0;
    /// Which channel stands for a sample when its variance is estimated; -1: the mean of all.
    int leading = -1;
};

using MakeSensor = Sensor (*)(const node::Node& node, Translation& translation);
ClassTable<MakeSensor>& sensorClasses();

/// Throws SceneFault for a sensor that can't be used; a missing one is replaced by the colorimetric one, with a warning.
Sensor makeSensor(const NodePointer& node, Translation& translation);

/// A grid over [first, last] nm with cells of at most 1 nm, a whole number of them.
SpectralGrid gridBetween(double first, double last);

}  // namespace nemra::core
