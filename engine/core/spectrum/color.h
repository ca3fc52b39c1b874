/// Colours to linear sRGB and to tristimulus values.
#pragma once

#include <array>
#include <string>

#include "engine/node/value.h"

namespace nemra::core {

using Triple = std::array<double, 3>;

/// A colour as linear-light sRGB (D65 white is 1, 1, 1). Known spaces, in any letter case: "sRGB" (encoded), "sRGB-linear"
/// (also "linear sRGB", "RGB"), "XYZ" (white 0.9505, 1, 1.0891) and "xyY". False for another space, which is read as sRGB.
bool toLinearSrgb(const node::Color& color, Triple& rgb);

}  // namespace nemra::core
