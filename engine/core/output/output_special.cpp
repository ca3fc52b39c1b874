// Pictures for a display that is described by its primaries and its curve.
//
// Perceptual quantiser: SMPTE ST 2084:2014, equation 5.2. Hybrid log-gamma: ITU-R BT.2100-2, table 5, on the linear value as
// scene light.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "engine/common/log.h"
#include "engine/core/geometry/affine.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {
namespace {

/// Between a linear value, 1 for the display's white and 0 for its black, and a code from 0 to 1.
struct Curve {
    std::function<double(double)> code;
    std::function<double(double)> value;
};

constexpr double kMostLuminance = 10000.0;  // cd/m2, of the perceptual quantiser
constexpr double m1 = 2610.0 / 16384.0;
constexpr double m2 = 2523.0 / 4096.0 * 128.0;
constexpr double c1 = 3424.0 / 4096.0;
constexpr double c2 = 2413.0 / 4096.0 * 32.0;
constexpr double c3 = 2392.0 / 4096.0 * 32.0;

double perceptualQuantiser(double luminance) {
    const double power = std::pow(std::clamp(luminance / kMostLuminance, 0.0, 1.0), m1);
    return std::pow((c1 + c2 * power) / (1.0 + c3 * power), m2);
}

double luminanceOfQuantiser(double code) {
    const double power = std::pow(code, 1.0 / m2);
    return kMostLuminance * std::pow(std::max(power - c1, 0.0) / (c2 - c3 * power), 1.0 / m1);
}

constexpr double kLogScale = 0.17883277;
constexpr double kLogShift = 1.0 - 4.0 * kLogScale;
const double kLogRise = 0.5 - kLogScale * std::log(4.0 * kLogScale);

double hybridLogGamma(double light) {
    const double e = std::clamp(light, 0.0, 1.0);
    return e <= 1.0 / 12.0 ? std::sqrt(3.0 * e) : kLogScale * std::log(12.0 * e - kLogShift) + kLogRise;
}

double lightOfLogGamma(double code) {
    return code <= 0.5 ? code * code / 3.0 : (std::exp((code - kLogRise) / kLogScale) + kLogShift) / 12.0;
}

Curve powerCurve(double gamma) {
    return {[power = 1.0 / gamma](double value) { return std::pow(value, power); },
            [gamma](double code) { return std::pow(code, gamma); }};
}

using Samples = std::vector<std::pair<double, double>>;

/// Linear between samples that ascend, constant beyond them.
double between(const Samples& samples, double at) {
    const auto above = std::upper_bound(samples.begin(), samples.end(), at,
                                        [](double x, const std::pair<double, double>& sample) { return x < sample.first; });
    if (above == samples.begin()) return samples.front().second;
    if (above == samples.end()) return samples.back().second;
    const auto below = above - 1;
    const double part = (at - below->first) / (above->first - below->first);
    return below->second + part * (above->second - below->second);
}

/// Codes of luminances by the measured samples; null where there are too few.
std::optional<Curve> measuredCurve(const node::Node& output, double black, double peak) {
    Samples codeOf;
    const auto table = output.table("curve_samples");
    const auto codes = table->numbers("code");
    const auto luminances = table->numbers("luminance");
    for (std::size_t i = 0; i < std::min(codes.size(), luminances.size()); ++i) {
        if (std::isfinite(codes[i]) && std::isfinite(luminances[i])) codeOf.emplace_back(luminances[i], codes[i]);
    }
    std::sort(codeOf.begin(), codeOf.end());
    if (codeOf.size() < 2) return std::nullopt;
    Samples luminanceOf;
    for (const auto& [luminance, code] : codeOf) luminanceOf.emplace_back(code, luminance);
    std::sort(luminanceOf.begin(), luminanceOf.end());
    return Curve{
        [codeOf = std::move(codeOf), black, peak](double value) { return between(codeOf, black + value * (peak - black)); },
        [luminanceOf = std::move(luminanceOf), black, peak](double code) {
            return (between(luminanceOf, code) - black) / (peak - black);
        }};
}

Curve curveOf(const node::Node& output, double black, double peak) {
    const std::string& name = output.choice("curve");
    if (name == "srgb") {
        const ColorSpace& srgb = colorSpace("srgb");
        return {[&](double value) { return srgb.encode(value); }, [&](double code) { return srgb.decode(code); }};
    }
    if (name == "pq") {
        // What the display adds to the light that its black has already.
        const double range = peak - black;
        return {[range](double value) { return perceptualQuantiser(value * range); },
                [range](double code) { return luminanceOfQuantiser(code) / range; }};
    }
    if (name == "hlg") return {hybridLogGamma, lightOfLogGamma};
    if (name == "table") {
        if (auto measured = measuredCurve(output, black, peak)) return std::move(*measured);
        log::warning(output.label(), "the table of the curve needs two samples; a gamma of 2.2 takes its place");
        return powerCurve(2.2);
    }
    return powerCurve(output.real("gamma"));
}

/// What the profile says: primaries and white by the inverse of the matrix, the curve by its kind or by samples. `black` is
/// relative to white.
void describe(DisplayImage& display, const node::Node& output, const Curve& curve, double black) {
    const auto m = output.matrix3("xyz_to_rgb");
    const std::array<Vec3, 3> rows{Vec3{m[0], m[1], m[2]}, Vec3{m[3], m[4], m[5]}, Vec3{m[6], m[7], m[8]}};
    const Affine toRgb{rows, {}};
    display.hasProfile = std::abs(toRgb.determinant()) > 1.0e-9;
    if (!display.hasProfile) return;
    const Affine toXyz = toRgb.inverse();
    const auto chromaticity = [&](const Vec3& rgb) {
        const Vec3 xyz = toXyz.vector(rgb);
        const double sum = xyz[0] + xyz[1] + xyz[2];
        return Chromaticity{xyz[0] / sum, xyz[1] / sum};
    };
    display.device =
        linearColorSpace(chromaticity({1, 0, 0}), chromaticity({0, 1, 0}), chromaticity({0, 0, 1}), chromaticity({1, 1, 1}));
    for (const double entry : display.device->fromXyz) display.hasProfile = display.hasProfile && std::isfinite(entry);
    display.black = black;
    const std::string& kind = output.choice("curve");
    if (kind == "srgb") {
        display.device->curve = ColorSpace::Curve::srgb;
    } else if (kind == "gamma") {
        display.gamma = output.real("gamma");
    } else {
        constexpr int kSteps = 4096;  // between which the steepest of the curves is straight to 2^-16
        for (int i = 0; i <= kSteps; ++i) {
            const double value = std::clamp(curve.value(static_cast<double>(i) / kSteps), 0.0, 1.0);
            display.lights.push_back(black + value * (1.0 - black));
        }
    }
}

DisplayImage makeSpecial(const Raw& raw, const node::Node& output, bool fast, int bits) {
    const auto film = raw.film();
    const auto view = raw.view();
    Picture picture{*film, *view, toXyz(*film, *view, "cie1931_2deg"), fast, {}, &raw};
    runFilters(output, picture);
    const double peak = output.real("peak_luminance");
    const double black = std::min(output.real("black_luminance"), 0.999 * peak);
    const Curve curve = curveOf(output, black, peak);
    const auto matrix = output.matrix3("xyz_to_rgb");
    DisplayImage display{picture.image.width, picture.image.height, "srgb", 0.0, {}, bits};
    describe(display, output, curve, black / peak);
    display.bytes.reserve(picture.image.values.size() * std::size_t(bits / 8));
    const double steps = std::exp2(std::min(bits, output.integer("bit_depth"))) - 1.0;
    for (std::size_t i = 0; i + 2 < picture.image.values.size(); i += 3) {
        const float* const xyz = picture.image.values.data() + i;
        for (std::size_t row = 0; row < 3; ++row) {
            double linear = 0.0;
            for (std::size_t c = 0; c < 3; ++c) linear += double(matrix[3 * row + c]) * double(xyz[c]);
            // Black adds to all that the display shows, so that much less is to be shown.
            const double shown = (linear * peak - black) / (peak - black);
            const double code = curve.code(shown > 0.0 ? std::min(shown, 1.0) : 0.0);
            display.append(std::round(steps * std::clamp(code, 0.0, 1.0)) / steps);
        }
    }
    return display;
}

constexpr std::array<const char*, 3> kFormats{"png", "jpg", "png16"};
const bool kKnown = addDisplayClass("special", makeSpecial);
const bool kFormatsKnown =
    outputClasses().add("special", [](const node::Node&) { return std::span<const char* const>(kFormats); });

}  // namespace
}  // namespace nemra::core
