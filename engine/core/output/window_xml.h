/// The XML of window simulation: scattering of a fenestration by patches of Klems's angle basis, as LBNL's WINDOW writes it
/// (schema BSDF-v1.4) and programs for daylight and for energy read it.
///
/// Such a file has its own frame: x lies along the sample's tangent, z along the back of its normal, y = tangent x normal. So for
/// a window whose normal points outdoors, and whose tangent points to the right for who stands indoors, y is up. "Front" is what
/// the normal points to. An azimuth counts from x to y: that of where light goes to, both for light that arrives and for light
/// that leaves, so that light which goes straight through, or is mirrored, stays in the patch of one number.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "engine/core/instrument/scatter_layout.h"

namespace nemra::core {

struct WindowProduct {
    std::string name;
    std::string manufacturer;
    double thickness = 0.0;  ///< m
};

/// Scattering in one part of the spectrum.
struct WindowSpectrum {
    std::string wavelength;  ///< "Visible", "Solar"; nm
    std::string unit;        ///< "Integral" for a mean; "Nanometer"
    std::string source;      ///< what it is weighed with: the light, and the detector
    std::string detector;
    std::vector<float> values;  ///< 1/sr, as the result has them, rows from the top
};

/// `instrument` has the basis of Klems. Throws std::runtime_error for a value that is no number.
std::string windowXml(const node::Node& instrument, const WindowProduct& product, std::span<const WindowSpectrum> spectra);

}  // namespace nemra::core
