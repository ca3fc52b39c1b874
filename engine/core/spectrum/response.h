/// Responses of sensors and meters that a user gives as spectra.
#pragma once

#include <string_view>

#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

/// What a response is divided by for the option `normalization` of its owner, between the two wavelengths in nm: its largest
/// value for "peak", its integral, nm, for "area"; else 1. Not positive where it can't be normalised.
double responseNorm(std::string_view normalization, const SpectralCurve& response, double fromNm, double toNm);

}  // namespace nemra::core
