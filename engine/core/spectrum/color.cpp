#include "engine/core/spectrum/color.h"

#include <cctype>
#include <cmath>

namespace nemra::core {

namespace {

double decodeSrgb(double v) {  // IEC 61966-2-1
    const double a = std::abs(v);
    return std::copysign(a <= 0.04045 ? a / 12.92 : std::pow((a + 0.055) / 1.055, 2.4), v);
}

Triple xyzToSrgb(const Triple& c) {  // inverse of the primaries of ITU-R BT.709 with white D65 (0.3127, 0.3290)
    return {3.2404541621 * c[0] - 1.5371385128 * c[1] - 0.4985314096 * c[2],
            -0.9692660305 * c[0] + 1.8760108454 * c[1] + 0.0415560175 * c[2],
            0.0556434310 * c[0] - 0.2040259135 * c[1] + 1.0572251882 * c[2]};
}

}  // namespace

bool toLinearSrgb(const node::Color& color, Triple& rgb) {
    std::string space;
    for (const char c : color.space) {
        if (std::isalnum(static_cast<unsigned char>(c))) space += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    const Triple v{color.coords[0], color.coords[1], color.coords[2]};
    if (space == "xyz" || space == "ciexyz") {
        rgb = xyzToSrgb(v);
    } else if (space == "xyy" || space == "ciexyy") {
        rgb = v[1] > 0.0 ? xyzToSrgb({v[0] / v[1] * v[2], v[2], (1.0 - v[0] - v[1]) / v[1] * v[2]}) : Triple{};
    } else if (space == "srgblinear" || space == "linearsrgb" || space == "rgb" || space == "rec709linear") {
        rgb = v;
    } else {
        rgb = {decodeSrgb(v[0]), decodeSrgb(v[1]), decodeSrgb(v[2])};
        return space.empty() || space == "srgb";
    }
    return true;
}

}  // namespace nemra::core
