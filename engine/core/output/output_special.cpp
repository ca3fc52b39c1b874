// Pictures for a display that is described by its primaries and its curve.
//
// Perceptual quantiser: SMPTE ST 2084:2014, equation 5.2. Hybrid log-gamma: ITU-R BT.2100-2, table 5, on the linear value as
// scene light.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "engine/common/log.h"
#include "engine/core/output/icc_profile.h"
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

/// The display's profile: its primaries from the matrix, and what each of its codes shows, black included. Empty for a matrix
/// that can't be inverted.
std::vector<char> measuredProfile(const std::array<float, 9>& xyzToRgb, const Curve& curve, double black) {
    const auto primaries = colorSpaceOfMatrix(xyzToRgb);
    if (!primaries) return {};
    constexpr std::size_t count = 1024;
    std::vector<float> light(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double code = static_cast<double>(i) / (count - 1);
        double low = 0.0;
        double high = 1.0;
        for (int step = 0; step < 40; ++step) {  // the curve rises
            const double middle = (low + high) / 2.0;
            (curve(middle) < code ? low : high) = middle;
        }
        light[i] = static_cast<float>(black + high * (1.0 - black));
    }
    return iccProfile(*primaries, light);
}

DisplayImage makeSpecial(const Raw& raw, const node::Node& output, bool fast) {
    const auto film = raw.film();
    const auto view = raw.view();
    Picture picture{*film, *view, toXyz(*film, *view, "cie1931_2deg"), fast, {}, &raw};
    runFilters(output, picture);
    const double peak = output.real("peak_luminance");
    const double black = std::min(output.real("black_luminance"), 0.999 * peak);
    const int depth = output.integer("bit_depth");
    const double steps = std::ldexp(1.0, depth) - 1.0;
    const Curve curve = curveOf(output, black, peak);
    const auto matrix = output.matrix3("xyz_to_rgb");
    DisplayImage display;
    display.width = picture.image.width;
    display.height = picture.image.height;
    display.colorSpace = "device";
    display.bits = depth > 8 ? 16 : 8;
    display.profile = measuredProfile(matrix, curve, black / peak);
    display.bytes.resize(picture.image.values.size() * static_cast<std::size_t>(display.bits / 8));
    for (std::size_t i = 0; i + 2 < picture.image.values.size(); i += 3) {
        const float* const xyz = picture.image.values.data() + i;
        for (std::size_t row = 0; row < 3; ++row) {
            double linear = 0.0;
            for (std::size_t c = 0; c < 3; ++c) linear += double(matrix[3 * row + c]) * double(xyz[c]);
            // Black adds to all that the display shows, so that much less is to be shown.
            const double shown = (linear * peak - black) / (peak - black);
            const double code = std::clamp(curve(shown > 0.0 ? std::min(shown, 1.0) : 0.0), 0.0, 1.0);
            display.set(i + row, std::round(code * steps) / steps);
        }
    }
    return display;
}

constexpr std::array<const char*, 2> kFormats{"png", "jpg"};
const bool kKnown = addDisplayClass("special", makeSpecial);
const bool kFormatsKnown = outputClasses().add("special", [] { return std::span<const char* const>(kFormats); });

}  // namespace
}  // namespace nemra::core
