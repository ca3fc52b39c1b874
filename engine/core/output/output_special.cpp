// Pictures for a display that is described by its primaries and its curve.
//
// Perceptual quantiser: SMPTE ST 2084:2014, equation 5.2. Hybrid log-gamma: ITU-R BT.2100-2, table 5, on the linear value as
// scene light.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "engine/common/log.h"
#include "engine/core/geometry/affine.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {
namespace {

/// From a linear value, 1 for the display's white, to a code from 0 to 1.
using Curve = std::function<double(double)>;

double perceptualQuantiser(double luminance) {
    constexpr double m1 = 2610.0 / 16384.0;
    constexpr double m2 = 2523.0 / 4096.0 * 128.0;
    constexpr double c1 = 3424.0 / 4096.0;
    constexpr double c2 = 2413.0 / 4096.0 * 32.0;
    constexpr double c3 = 2392.0 / 4096.0 * 32.0;
    const double power = std::pow(std::clamp(luminance / 10000.0, 0.0, 1.0), m1);
    return std::pow((c1 + c2 * power) / (1.0 + c3 * power), m2);
}

double hybridLogGamma(double light) {
    constexpr double a = 0.17883277;
    const double b = 1.0 - 4.0 * a;
    const double c = 0.5 - a * std::log(4.0 * a);
    const double e = std::clamp(light, 0.0, 1.0);
    return e <= 1.0 / 12.0 ? std::sqrt(3.0 * e) : a * std::log(12.0 * e - b) + c;
}

/// Code of a luminance by the measured samples, linear between them.
Curve measuredCurve(const node::Node& output, double black, double peak) {
    std::vector<std::pair<double, double>> samples;  // luminance, code
    const auto table = output.table("curve_samples");
    const auto codes = table->numbers("code");
    const auto luminances = table->numbers("luminance");
    for (std::size_t i = 0; i < std::min(codes.size(), luminances.size()); ++i) {
        if (std::isfinite(codes[i]) && std::isfinite(luminances[i])) samples.emplace_back(luminances[i], codes[i]);
    }
    std::sort(samples.begin(), samples.end());
    if (samples.size() < 2) {
        log::warning(output.label(), "the table of the curve needs two samples; a gamma of 2.2 takes its place");
        return [](double value) { return std::pow(value, 1.0 / 2.2); };
    }
    return [samples = std::move(samples), black, peak](double value) {
        const double luminance = black + value * (peak - black);
        const auto above = std::upper_bound(samples.begin(), samples.end(), std::pair{luminance, 2.0});
        if (above == samples.begin()) return samples.front().second;
        if (above == samples.end()) return samples.back().second;
        const auto below = above - 1;
        const double part = (luminance - below->first) / (above->first - below->first);
        return below->second + part * (above->second - below->second);
    };
}

Curve curveOf(const node::Node& output, double black, double peak) {
    const std::string& name = output.choice("curve");
    if (name == "srgb") return [](double value) { return colorSpace("srgb").encode(value); };
    if (name == "pq") return [peak](double value) { return perceptualQuantiser(value * peak); };
    if (name == "hlg") return hybridLogGamma;
    if (name == "table") return measuredCurve(output, black, peak);
    return [power = 1.0 / output.real("gamma")](double value) { return std::pow(value, power); };
}

/// What a profile can say: primaries and white by the inverse of the matrix, and a curve that it has words for.
void describe(DisplayImage& display, const node::Node& output) {
    const auto m = output.matrix3("xyz_to_rgb");
    const std::array<Vec3, 3> rows{Vec3{m[0], m[1], m[2]}, Vec3{m[3], m[4], m[5]}, Vec3{m[6], m[7], m[8]}};
    const Affine toRgb{rows, {}};
    const std::string& curve = output.choice("curve");
    display.hasProfile = (curve == "gamma" || curve == "srgb") && std::abs(toRgb.determinant()) > 1.0e-9;
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
    if (curve == "srgb") display.device->curve = ColorSpace::Curve::srgb;
    if (curve == "gamma") display.gamma = output.real("gamma");
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
    describe(display, output);
    display.bytes.reserve(picture.image.values.size() * std::size_t(bits / 8));
    const double steps = std::exp2(std::min(bits, output.integer("bit_depth"))) - 1.0;
    for (std::size_t i = 0; i + 2 < picture.image.values.size(); i += 3) {
        const float* const xyz = picture.image.values.data() + i;
        for (std::size_t row = 0; row < 3; ++row) {
            double linear = 0.0;
            for (std::size_t c = 0; c < 3; ++c) linear += double(matrix[3 * row + c]) * double(xyz[c]);
            // Black adds to all that the display shows, so that much less is to be shown.
            const double shown = (linear * peak - black) / (peak - black);
            const double code = curve(shown > 0.0 ? std::min(shown, 1.0) : 0.0);
            display.append(std::round(steps * std::clamp(code, 0.0, 1.0)) / steps);
        }
    }
    return display;
}

constexpr std::array<const char*, 3> kFormats{"png", "jpg", "png16"};
const bool kKnown = addDisplayClass("special", makeSpecial);
const bool kFormatsKnown = outputClasses().add("special", [] { return std::span<const char* const>(kFormats); });

}  // namespace
}  // namespace nemra::core
