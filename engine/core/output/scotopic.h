/// What the rods see.
#pragma once

#include <string_view>

#include "engine/core/output/picture.h"
#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

/// lm/W; the CIE rounds 683 / V'(555 nm) to it.
inline constexpr double kMaxScotopicEfficacy = 1700.0;

/// Name of the plane that holds the scotopic luminance in cd/m2.
inline constexpr std::string_view kScotopicPlane = "scotopic";

/// V'(lambda) of 1951, linear between the rows of its table, zero outside 380 to 780 nm.
SpectralCurve scotopicEfficiency();

/// Scotopic luminance from tristimulus values, for want of a spectrum: Y (1.33 (1 + (Y + Z) / X) - 1.68), not below 0 (Larson,
/// Rushmeier and Piatko 1997, section 4.2, a fit to the colours of a chart).
double approximateScotopic(double x, double y, double z);

/// The picture's scotopic luminances: the plane of that name, or approximated from the image.
std::vector<float> scotopicLuminances(const Picture& picture);

}  // namespace nemra::core
