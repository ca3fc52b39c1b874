/// What several classes of instruments share.
#pragma once

#include "engine/node/catalogue/build.h"

namespace nemra::node {

using Parameters = std::vector<ParameterSpec>;

/// Where a camera stands, what it looks at, and its pixels; then what only this camera has.
Parameters camera(Parameters own);
/// Pixels of an instrument that isn't a camera.
Parameters pixels(std::int32_t width, std::int32_t height);
/// How wide a perspective view is.
Parameter horizontalFov();
/// How wide a parallel view is.
Parameter viewWidth();
/// Which part of the sphere a spherical view shows.
Parameters sphereView();

std::vector<ChildSpec> sensorChild();

/// Instruments that measure what arrives at surfaces instead of what leaves them.
void addIrradianceInstruments(Catalogue& catalogue);
/// Instruments that measure angular distributions, and those that stand for a measurement made elsewhere.
void addLaboratoryInstruments(Catalogue& catalogue);

}  // namespace nemra::node
