/// Encoders of picture files. They give the bytes of a whole file, or throw std::runtime_error with the library's reason.
#pragma once

#include <vector>

#include "engine/core/output/picture.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

/// 8 bits per component, with the chunks that say which colours are meant.
std::vector<char> encodePng(const DisplayImage& image);

/// OpenEXR, 32-bit float, ZIP, scene-linear, rows from the top. Band values as channels "S0.<wavelength>nm" (Fichet, Pacanowski,
/// Wilkie, "An OpenEXR Layout for Spectral Images", JCGT 10(3), 2021), energy as "E"; R, G, B always, in the output's colour
/// space, scaled so that (1, 1, 1) has a luminance of 1 cd/m2, as whiteLuminance says (for energy: R = G = B = the value).
std::vector<char> encodeExr(const Raw& raw);

}  // namespace nemra::core
