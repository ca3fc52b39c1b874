/// Colorimetric observers.
#pragma once

#include <array>
#include <string_view>

#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

/// Luminous efficacy of radiation at 540 THz, lm/W.
inline constexpr double kMaxEfficacy = 683.0;

inline constexpr double kVisibleFirst = 360.0;  ///< nm
inline constexpr double kVisibleLast = 830.0;   ///< nm

enum class Observer { cie1931, cie1964 };

/// By the name of the option that chooses it.
Observer observerByName(std::string_view option);
/// Colour-matching function 0 (xbar), 1 (ybar) or 2 (zbar), linear between the table's rows, zero outside 360 to 830 nm.
SpectralCurve matchingFunction(Observer observer, int component);
/// X, Y, Z of a spectral radiance in W/(m2 sr nm); Y is the luminance in cd/m2.
std::array<double, 3> curveXyz(const SpectralCurve& radiance, Observer observer);
/// Luminance by the 2 degree observer, cd/m2.
double curveLuminance(const SpectralCurve& radiance);

}  // namespace nemra::core
