/// Results out of OpenEXR files: our own and those of others.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "engine/core/output/color_space.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

/// What becomes of a file's channels beside what they are.
struct ExrMapping {
    const ColorSpace* colors = nullptr;  ///< primaries of R, G, B whatever the file says; null: those of the file
    double scale = 1.0;                  ///< of all channels, in the end
    bool flipped = false;                ///< the first row is the lowest
};

/// What the file's channels are, the first that fits:
///   S0.<wavelength> (or T.<wavelength>: a reflectance or transmittance) in nm, any other length, or Hz, of the published
///   spectral
///     layout (Fichet, Pacanowski, Wilkie 2021): spectral channels in the order of their wavelengths;
///   X, Y, Z: tristimulus values;  E of our own: energy;
///   R, G, B: turned into X, Y, Z by the file's chromaticities (those of sRGB without) and whiteLuminance (1 cd/m2 without),
///     with A beside them;
///   Y: a grey;  else all channels under their names, of unknown kind.
/// Other channels are left out with one message. Each pixel of the result counts as one sample. Throws a PictureFault.
std::shared_ptr<Raw> readExr(std::span<const char> bytes, const std::string& origin, const ExrMapping& mapping = {});

}  // namespace nemra::core
