/// Planck radiator.
#pragma once

namespace nemra::core {

/// Spectral radiance of a black body in vacuum, W/(m2 sr nm). Planck (1901), constants of the SI (2019). temperature in K, > 0.
double planckRadiance(double lambdaNm, double temperature) noexcept;
/// Wavelength of its maximum, nm (Wien's displacement law).
double planckPeak(double temperature) noexcept;

}  // namespace nemra::core
