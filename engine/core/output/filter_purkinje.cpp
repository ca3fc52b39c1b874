// Kirk and O'Brien, "Perceptually Based Tone Mapping for Low-Light Conditions", ACM Transactions on Graphics 30(4), 2011, after
// Cao, Pokorny, Smith and Zele, "Rod Contributions to Color Perception", Vision Research 48(26), 2008: rods send their signal
// through the pathways of the cones, whose gains fall with the light that the eye is adapted to.
//
// Cone signals q (trolands) are those of Smith and Pokorny (1975), scaled to a peak sensitivity of 1; qR is the scotopic signal.
//   g = 1 / sqrt(1 + 0.33 (q + kappa qR)),  kappa = 0.25 for L and M, 0.4 for S
//   W = 0.619 gL / 0.637 + 0.381 gM / 0.392
//   d(M - L) = x kappa (1.111 gM / 0.392 - 0.939 gL / 0.637) qR,   d(S - L - M) = y (0.4 gS / 1.606 - 0.15 W) qR,   d(L + M) = z
//   W qR
// x, y and z are free in the model. Here z is such that an equal-energy white keeps its luminance when only the rods see it, and
// x and y are such that what the rods see then is a bluish grey near (0.21, 0.24).
//
// Trolands are luminance times the area of the pupil in mm2, with the diameter 4.9 - 3 tanh(0.4 log10 L) mm (Moon and Spencer
// 1944).
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "engine/core/output/scotopic.h"
#include "engine/core/output/tone.h"

namespace nemra::core {
namespace {

using Cones = std::array<double, 3>;  ///< L, M, S

constexpr Cones kPeak{0.637, 0.392, 1.606};
constexpr double kScotopicOfWhite = 2.261;  ///< scotopic over photopic luminance of an equal-energy spectrum
constexpr double kZ = 0.446;
constexpr double kX = 0.2 * kZ;
constexpr double kY = 12.0 * kZ;

Cones conesOf(double x, double y, double z) {
    return {(0.15514 * x + 0.54312 * y - 0.03286 * z) / kPeak[0], (-0.15514 * x + 0.45684 * y + 0.03286 * z) / kPeak[1],
            z / kPeak[2]};
}

std::array<double, 3> xyzOf(const Cones& cones) {
    const double l = cones[0] * kPeak[0];
    const double m = cones[1] * kPeak[1];
    const double z = cones[2] * kPeak[2];
    const double y = (l + m) / (0.54312 + 0.45684);
    return {(l - 0.54312 * y + 0.03286 * z) / 0.15514, y, z};
}

double pupilArea(double luminance) {
    const double diameter = 4.9 - 3.0 * std::tanh(0.4 * std::log10(std::max(luminance, 1.0e-8)));
    return 0.25 * std::numbers::pi * diameter * diameter;
}

/// What the rods add to the cones' signals per unit of their own.
Cones rodShares(const Cones& adaptation, double rods) {
    constexpr Cones kappa{0.25, 0.25, 0.4};
    Cones g{};
    for (std::size_t c = 0; c < 3; ++c) {
        g[c] = 1.0 / std::sqrt(1.0 + 0.33 * (std::max(0.0, adaptation[c]) + kappa[c] * rods));
    }
    const double luminance = 0.619 * g[0] / kPeak[0] + 0.381 * g[1] / kPeak[1];
    const double redGreen = kX * kappa[0] * (1.111 * g[1] / kPeak[1] - 0.939 * g[0] / kPeak[0]);
    const double blueYellow = kY * (0.4 * g[2] / kPeak[2] - 0.15 * luminance);
    const double sum = kZ * luminance;
    return {0.5 * (sum - redGreen), 0.5 * (sum + redGreen), blueYellow + sum};
}

double logAverageOf(const std::vector<float>& values) {
    double sum = 0.0;
    std::size_t lit = 0;
    for (const float value : values) {
        if (!(value > 0.0F) || !std::isfinite(value)) continue;
        sum += std::log(double(value));
        ++lit;
    }
    return lit > 0 ? std::exp(sum / double(lit)) : 0.0;
}

Cones times(Cones cones, double factor) {
    for (double& cone : cones) cone *= factor;
    return cones;
}

void filterPurkinje(const node::Node& node, Picture& picture) {
    XyzImage& image = picture.image;
    const std::vector<float> scotopic = scotopicLuminances(picture);
    const std::string& adaptation = node.choice("adaptation");
    const bool isLocal = adaptation == "local";
    const double adapted = adaptation == "fixed" ? node.real("adaptation_luminance") : logAverage(image);
    if (!(adapted > 0.0)) return;
    const double rodsAdapted = adaptation == "fixed" ? kScotopicOfWhite * adapted : logAverageOf(scotopic);
    const double area = pupilArea(adapted);
    const Cones common = rodShares(times(conesOf(adapted, adapted, adapted), area), rodsAdapted * area);
    const double strength = node.real("strength");

    for (std::size_t i = 0; i < scotopic.size(); ++i) {
        float* const xyz = image.values.data() + 3 * i;
        const Cones cones = conesOf(xyz[0], xyz[1], xyz[2]);
        Cones shares = common;
        if (isLocal) {
            const double here = pupilArea(xyz[1]);
            shares = rodShares(times(cones, here), scotopic[i] * here);
        }
        Cones seen = cones;
        for (std::size_t c = 0; c < 3; ++c) seen[c] += strength * shares[c] * scotopic[i];
        const auto result = xyzOf(seen);
        for (std::size_t c = 0; c < 3; ++c) xyz[c] = static_cast<float>(result[c]);
    }
}

const bool kKnown = filterClasses().add("purkinje", filterPurkinje);

}  // namespace
}  // namespace nemra::core
