/// Spectra as functions of wavelength, as they are before they are baked into tables.
#pragma once

#include <functional>
#include <vector>

#include "engine/core/translate/class_table.h"
#include "engine/core/translate/translation.h"

namespace nemra::core {

/// A function of the vacuum wavelength in nm. Its unit is that of its use: 1 for a reflectance, W/(m2 sr nm) for a radiance.
struct SpectralCurve {
    std::function<double(double)> value;
    /// Wavelengths, ascending, where the function or its slope jumps; between two of them it is smooth.
    std::vector<double> knots;

    double operator()(double lambdaNm) const { return value(lambdaNm); }
};

SpectralCurve constantCurve(double value);
SpectralCurve scaledCurve(SpectralCurve curve, double factor);

/// Integral over [fromNm, toNm] of curve, or of curve times weight, by Gauss-Legendre panels between the knots, at most 1 nm
/// wide.
double integrate(const SpectralCurve& curve, double fromNm, double toNm);
double integrate(const SpectralCurve& curve, const SpectralCurve& weight, double fromNm, double toNm);

using MakeSpectrum = SpectralCurve (*)(const node::Node& node, Translation& translation);
ClassTable<MakeSpectrum>& spectrumClasses();

/// The curve of a node of family spectrum. A link that leads nowhere, or a class without a light part, gives one warning and
/// zero.
SpectralCurve makeSpectrum(const NodePointer& node, Translation& translation);

/// The curve of such a node as light that `owner` gives off: what is below zero, or no number, is cut to zero, with one warning.
SpectralCurve makeRadiance(const NodePointer& node, const node::Node& owner, Translation& translation);

}  // namespace nemra::core
