/// Colour spaces of pictures.
#pragma once

#include <array>
#include <string_view>

namespace nemra::core {

struct Chromaticity {
    double x, y;
};

/// Primaries and white as CIE 1931 chromaticities, and the curve between linear light and code values.
struct ColorSpace {
    enum class Curve { srgb, rec2020, linear };
    Chromaticity red, green, blue, white;
    Curve curve;
    std::array<double, 9> fromXyz;    ///< row-major; XYZ with white at Y = 1 to linear R, G, B
    std::array<double, 9> toXyzRows;  ///< its inverse

    std::array<double, 3> linear(double X, double Y, double Z) const noexcept {
        return {fromXyz[0] * X + fromXyz[1] * Y + fromXyz[2] * Z, fromXyz[3] * X + fromXyz[4] * Y + fromXyz[5] * Z,
                fromXyz[6] * X + fromXyz[7] * Y + fromXyz[8] * Z};
    }
    /// The way back: X, Y, Z of linear R, G, B.
    std::array<double, 3> toXyz(double r, double g, double b) const noexcept {
        const auto& m = toXyzRows;
        return {m[0] * r + m[1] * g + m[2] * b, m[3] * r + m[4] * g + m[5] * b, m[6] * r + m[7] * g + m[8] * b};
    }
    /// Code value in [0, 1] of a linear component, which is clipped to [0, 1]; NaN counts as 0.
    double encode(double linear) const noexcept;
    /// The linear component that a code value stands for; codes outside of [0, 1] are clipped to it.
    double decode(double code) const noexcept;
};

/// Linear light with those primaries and that white.
ColorSpace linearColorSpace(Chromaticity red, Chromaticity green, Chromaticity blue, Chromaticity white);
/// The primaries that Radiance pictures have if they name none, with the white of equal energy (Ward, "The RADIANCE Picture File
/// Format").
const ColorSpace& radianceColorSpace();

/// "srgb" (IEC 61966-2-1:1999), "rec2020" (ITU-R BT.2020-2), "xyz" (CIE XYZ as it is, linear); srgb for any other name.
const ColorSpace& colorSpace(std::string_view name);

}  // namespace nemra::core
