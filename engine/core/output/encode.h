/// Encoders of picture files. They give the bytes of a whole file, or throw std::runtime_error with the library's reason.
#pragma once

#include <vector>

#include "engine/core/output/picture.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

/// 8 or 16 bits per component, with the ICC profile of its colours and, for programs that read no profiles, the nearest that the
/// format's own words say.
std::vector<char> encodePng(const DisplayImage& image);

/// 8 bits per component, quality 95, no chroma subsampling, with the ICC profile. At most 65500 pixels a side.
std::vector<char> encodeJpeg(const DisplayImage& image);

/// What an OpenEXR file of tristimulus values holds: R, G, B in the output's colour space, or X, Y, Z as they were measured.
enum class ExrColors { rgb, xyz };

/// OpenEXR, 32-bit float, ZIP, scene-linear, rows from the top. Band values as channels "S0.<wavelength>nm" (Fichet, Pacanowski,
/// Wilkie, "An OpenEXR Layout for Spectral Images", JCGT 10(3), 2021), energy as "E", both with R, G, B beside them; R, G, B are
/// scaled so that (1, 1, 1) has a luminance of 1 cd/m2, as whiteLuminance says (for energy: R = G = B = the value).
std::vector<char> encodeExr(const Raw& raw, ExrColors colors = ExrColors::rgb);

/// Radiance picture (RGBE, run-length encoded) with the view of the camera. Values are W/(m2 sr) in Radiance's three bands, of
/// which 179 lm/W make the luminance (Ward Larson and Shakespeare, Rendering with Radiance, 1998); of an energy sensor the value.
std::vector<char> encodeHdr(const Raw& raw);

}  // namespace nemra::core
