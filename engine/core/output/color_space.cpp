#include "engine/core/output/color_space.h"

#include <cmath>

namespace nemra::core {

namespace {

using Matrix = std::array<double, 9>;

Matrix inverse(const Matrix& m) {
    const auto minor = [&](int a, int b, int c, int d) {
        return m[std::size_t(a)] * m[std::size_t(d)] - m[std::size_t(b)] * m[std::size_t(c)];
    };
    const double c0 = minor(4, 5, 7, 8);
    const double c1 = -minor(3, 5, 6, 8);
    const double c2 = minor(3, 4, 6, 7);
    const double determinant = m[0] * c0 + m[1] * c1 + m[2] * c2;
    Matrix result{c0, -minor(1, 2, 7, 8), minor(1, 2, 4, 5), c1, minor(0, 2, 6, 8), -minor(0, 2, 3, 5),
                  c2, -minor(0, 1, 6, 7), minor(0, 1, 3, 4)};
    for (double& entry : result) entry /= determinant;
    return result;
}

/// Linear RGB from XYZ such that the white, at Y = 1, becomes (1, 1, 1). SMPTE RP 177-1993, section 3.
Matrix fromXyz(Chromaticity red, Chromaticity green, Chromaticity blue, Chromaticity white) {
    const Matrix primaries{
        red.x, green.x, blue.x, red.y, green.y, blue.y, 1 - red.x - red.y, 1 - green.x - green.y, 1 - blue.x - blue.y};
    const Matrix unscaled = inverse(primaries);
    const double X = white.x / white.y;
    const double Z = (1 - white.x - white.y) / white.y;
    Matrix toXyz = primaries;
    for (std::size_t column = 0; column < 3; ++column) {
        const double scale = unscaled[3 * column] * X + unscaled[3 * column + 1] + unscaled[3 * column + 2] * Z;
        for (std::size_t row = 0; row < 3; ++row) toXyz[3 * row + column] *= scale;
    }
    return inverse(toXyz);
}

ColorSpace make(Chromaticity red, Chromaticity green, Chromaticity blue, Chromaticity white, ColorSpace::Curve curve) {
    const Matrix matrix = fromXyz(red, green, blue, white);
    return {red, green, blue, white, curve, matrix, inverse(matrix)};
}

constexpr Chromaticity kD65{0.3127, 0.3290};

// ITU-R BT.2020-2, table 4, to the precision of a double
constexpr double kAlpha2020 = 1.09929682680944;
constexpr double kBeta2020 = 0.018053968510807;

}  // namespace

double ColorSpace::encode(double linear) const noexcept {
    if (!(linear > 0.0)) return 0.0;
    if (linear >= 1.0) return 1.0;
    switch (curve) {
        case Curve::srgb:
            return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
        case Curve::rec2020:
            return linear < kBeta2020 ? 4.5 * linear : kAlpha2020 * std::pow(linear, 0.45) - (kAlpha2020 - 1.0);
        case Curve::linear:
            break;
    }
    return linear;
}

double ColorSpace::decode(double code) const noexcept {
    if (!(code > 0.0)) return 0.0;
    if (code >= 1.0) return 1.0;
    switch (curve) {
        case Curve::srgb:
            return code <= 0.04045 ? code / 12.92 : std::pow((code + 0.055) / 1.055, 2.4);
        case Curve::rec2020:
            return code < 4.5 * kBeta2020 ? code / 4.5 : std::pow((code + kAlpha2020 - 1.0) / kAlpha2020, 1.0 / 0.45);
        case Curve::linear:
            break;
    }
    return code;
}

ColorSpace linearColorSpace(Chromaticity red, Chromaticity green, Chromaticity blue, Chromaticity white) {
    return make(red, green, blue, white, ColorSpace::Curve::linear);
}

const ColorSpace& radianceColorSpace() {
    static const ColorSpace space = linearColorSpace({0.640, 0.330}, {0.290, 0.600}, {0.150, 0.060}, {1.0 / 3, 1.0 / 3});
    return space;
}

const ColorSpace& colorSpace(std::string_view name) {
    static const ColorSpace srgb = make({0.640, 0.330}, {0.300, 0.600}, {0.150, 0.060}, kD65, ColorSpace::Curve::srgb);
    static const ColorSpace rec2020 = make({0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}, kD65, ColorSpace::Curve::rec2020);
    // Here white is the stimulus (1, 1, 1) and nothing is converted.
    static const ColorSpace xyz = make({1, 0}, {0, 1}, {0, 0}, {1.0 / 3, 1.0 / 3}, ColorSpace::Curve::linear);
    if (name == "rec2020") return rec2020;
    if (name == "xyz") return xyz;
    return srgb;
}

}  // namespace nemra::core
