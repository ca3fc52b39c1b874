/// Projections that several instruments share. Each reads its parameters from the instrument's node.
#pragma once

#include "engine/core/output/projection.h"

namespace nemra::core {

/// By `horizontal_fov`.
std::unique_ptr<Projection> perspectiveWithSquarePixels(const node::Node& instrument, int width, int height);
/// By `fov`, the full angle across the circle that touches the shorter sides of the image or, if `diagonal`, goes through its
/// corners. `kind` is one of equidistant, equisolid, stereographic, orthographic.
std::unique_ptr<Projection> fisheye(std::string_view kind, double fovDeg, bool diagonal, int width, int height);
/// Longitude from left to right and latitude (or its sine) from bottom to top, about the line of sight.
std::unique_ptr<Projection> sphere(bool equalArea, double longitudeRangeDeg, double latitudeRangeDeg, int width, int height);

}  // namespace nemra::core
