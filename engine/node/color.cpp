#include "engine/node/color.h"

#include <cmath>

namespace nemra::node {

namespace {

using Triple = std::array<double, 3>;
using Matrix = std::array<Triple, 3>;

constexpr Xyz whiteOf(double x, double y) { return {x / y, 1.0, (1.0 - x - y) / y}; }
/// D65 as ITU-R BT.709 and BT.2020 give it.
constexpr Xyz kD65 = whiteOf(0.3127, 0.3290);

constexpr Triple multiply(const Matrix& m, const Triple& v) {
    Triple result{};
    for (std::size_t i = 0; i < 3; ++i) result[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return result;
}

constexpr Matrix inverse(const Matrix& m) {
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            const std::size_t r0 = (j + 1) % 3;
            const std::size_t r1 = (j + 2) % 3;
            const std::size_t c0 = (i + 1) % 3;
            const std::size_t c1 = (i + 2) % 3;
            result[i][j] = m[r0][c0] * m[r1][c1] - m[r0][c1] * m[r1][c0];
        }
    }
    const double determinant = m[0][0] * result[0][0] + m[0][1] * result[1][0] + m[0][2] * result[2][0];
    for (Triple& row : result) {
        for (double& element : row) element /= determinant;
    }
    return result;
}

/// From linear RGB with these primaries (x and y of red, green, blue) and white to XYZ: SMPTE RP 177 (1993).
constexpr Matrix rgbToXyz(const std::array<std::array<double, 2>, 3>& primaries, const Xyz& white) {
    Matrix columns{};
    for (std::size_t i = 0; i < 3; ++i) {
        const Xyz xyz = whiteOf(primaries[i][0], primaries[i][1]);
        for (std::size_t row = 0; row < 3; ++row) columns[row][i] = xyz[row];
    }
    const Triple scale = multiply(inverse(columns), white);
    for (Triple& row : columns) {
        for (std::size_t i = 0; i < 3; ++i) row[i] *= scale[i];
    }
    return columns;
}

constexpr Matrix kRec709ToXyz = rgbToXyz({{{0.640, 0.330}, {0.300, 0.600}, {0.150, 0.060}}}, kD65);
constexpr Matrix kXyzToRec709 = inverse(kRec709ToXyz);
constexpr Matrix kRec2020ToXyz = rgbToXyz({{{0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}}}, kD65);
constexpr Matrix kXyzToRec2020 = inverse(kRec2020ToXyz);

template <class Curve>
Triple perChannel(const Triple& v, Curve curve) {
    Triple result;
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = std::copysign(curve(std::fabs(v[i])), v[i]);  // odd, as extended ranges have it
    return result;
}

/// IEC 61966-2-1 (1999).
double srgbToLinear(double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); }
double linearToSrgb(double v) { return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1.0 / 2.4) - 0.055; }

/// ITU-R BT.2020-2 (2015), with alpha and beta to more digits so that the two parts meet.
constexpr double kAlpha = 1.09929682680944;
constexpr double kBeta = 0.018053968510807;
double rec2020ToLinear(double v) { return v < 4.5 * kBeta ? v / 4.5 : std::pow((v + kAlpha - 1.0) / kAlpha, 1.0 / 0.45); }
double linearToRec2020(double v) { return v < kBeta ? v * 4.5 : kAlpha * std::pow(v, 0.45) - (kAlpha - 1.0); }

/// CIE 015:2018, section 8.2.1.
constexpr double kDelta = 6.0 / 29.0;
double labCurve(double t) { return t > kDelta * kDelta * kDelta ? std::cbrt(t) : t / (3.0 * kDelta * kDelta) + 4.0 / 29.0; }
double labCurveInverse(double t) { return t > kDelta ? t * t * t : 3.0 * kDelta * kDelta * (t - 4.0 / 29.0); }

Xyz labToXyz(const Triple& lab) {
    const double f = (lab[0] + 16.0) / 116.0;
    return {kD65[0] * labCurveInverse(f + lab[1] / 500.0), kD65[1] * labCurveInverse(f),
            kD65[2] * labCurveInverse(f - lab[2] / 200.0)};
}
Triple xyzToLab(const Xyz& xyz) {
    const double fx = labCurve(xyz[0] / kD65[0]);
    const double fy = labCurve(xyz[1] / kD65[1]);
    const double fz = labCurve(xyz[2] / kD65[2]);
    return {116.0 * fy - 16.0, 500.0 * (fx - fy), 200.0 * (fy - fz)};
}

Xyz xyyToXyz(const Triple& v) {
    if (v[1] == 0.0) return {0.0, 0.0, 0.0};
    return {v[0] / v[1] * v[2], v[2], (1.0 - v[0] - v[1]) / v[1] * v[2]};
}
Triple xyzToXyy(const Xyz& v) {
    const double sum = v[0] + v[1] + v[2];
    if (sum == 0.0) return {0.3127, 0.3290, 0.0};  // black has the chromaticity of the white
    return {v[0] / sum, v[1] / sum, v[1]};
}

constexpr ColorSpace kSpaces[] = {
    {"srgb", "R'G'B' of IEC 61966-2-1, encoded, 0 to 1",
     [](const Triple& v) { return multiply(kRec709ToXyz, perChannel(v, srgbToLinear)); },
     [](const Xyz& v) { return perChannel(multiply(kXyzToRec709, v), linearToSrgb); }},
    {"linear_srgb", "RGB with the primaries of sRGB, proportional to light",
     [](const Triple& v) { return multiply(kRec709ToXyz, v); }, [](const Xyz& v) { return multiply(kXyzToRec709, v); }},
    {"xyz", "CIE 1931 XYZ, Y = 1 for white", [](const Triple& v) { return v; }, [](const Xyz& v) { return v; }},
    {"xyy", "CIE 1931 chromaticity x, y and Y, Y = 1 for white", xyyToXyz, xyzToXyy},
    {"lab", "CIE 1976 L*a*b* against D65, L* from 0 to 100", labToXyz, xyzToLab},
    {"rec2020", "R'G'B' of ITU-R BT.2020, encoded, 0 to 1",
     [](const Triple& v) { return multiply(kRec2020ToXyz, perChannel(v, rec2020ToLinear)); },
     [](const Xyz& v) { return perChannel(multiply(kXyzToRec2020, v), linearToRec2020); }},
    {"linear_rec2020", "RGB with the primaries of ITU-R BT.2020, proportional to light",
     [](const Triple& v) { return multiply(kRec2020ToXyz, v); }, [](const Xyz& v) { return multiply(kXyzToRec2020, v); }},
};

}  // namespace

std::span<const ColorSpace> colorSpaces() noexcept { return kSpaces; }

std::optional<std::int32_t> findColorSpace(std::string_view name) noexcept {
    for (std::size_t i = 0; i < std::size(kSpaces); ++i) {
        if (kSpaces[i].name == name) return static_cast<std::int32_t>(i);
    }
    return std::nullopt;
}

std::string colorSpaceNames() {
    std::string names;
    for (const ColorSpace& space : kSpaces) {
        if (!names.empty()) names += ", ";
        names += space.name;
    }
    return names;
}

std::optional<Xyz> toXyz(const Color& color) noexcept {
    const auto space = findColorSpace(color.space);
    if (!space) return std::nullopt;
    return kSpaces[*space].toXyz({color.coords[0], color.coords[1], color.coords[2]});
}

std::optional<Color> convert(const Color& color, std::string_view space) {
    const auto xyz = toXyz(color);
    const auto target = findColorSpace(space);
    if (!xyz || !target) return std::nullopt;
    Color result{std::string(space), {}};
    const Triple coords = kSpaces[*target].fromXyz(*xyz);
    for (std::size_t i = 0; i < 3; ++i) result.coords[i] = static_cast<float>(coords[i]);
    return result;
}

}  // namespace nemra::node
