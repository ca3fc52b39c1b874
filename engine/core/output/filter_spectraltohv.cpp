// Tristimulus values and the scotopic luminance 1700 lm/W times the integral of V' times spectral radiance (CIE 1951).
//
// An aged lens: the matching functions belong to an observer of 32 years (CIE S 026:2018), and an eye of another age differs from
// it by the factor 10^(D(32) - D(age)), with the optical density of the ocular media of CIE 203:2012 (van de Kraats and van
// Norren, "Optical Density of the Aging Human Ocular Media", JOSA A 24(7), 2007). Only its terms that change with age matter
// here:
//   D(age) = age^2 (0.000031 (400 / nm)^4 - 0.000063 * 2.13 exp(-(0.029 (nm - 370))^2) + 0.000186 * 11.95 exp(-(0.021 (nm -
//   325))^2)
//            + 0.000132 * 1.43 exp(-(0.008 (nm - 325))^2)) + what stays.
#include <cmath>

#include "engine/common/log.h"
#include "engine/core/opencl/attempt.h"
#include "engine/core/output/filters_opencl.h"
#include "engine/core/output/scotopic.h"
#include "engine/core/output/spectral_weights.h"
#include "engine/core/spectrum/observer.h"

namespace nemra::core {
namespace {

constexpr double kReferenceAge = 32.0;

/// Density at that wavelength per year squared.
double agingDensity(double nm) {
    const auto bell = [&](double slope, double centre) { return std::exp(-std::pow(slope * (nm - centre), 2)); };
    return 0.000031 * std::pow(400.0 / nm, 4) - 0.000063 * 2.13 * bell(0.029, 370.0) + 0.000186 * 11.95 * bell(0.021, 325.0) +
           0.000132 * 1.43 * bell(0.008, 325.0);
}

SpectralCurve throughLens(SpectralCurve response, double age) {
    if (age == kReferenceAge) return response;
    const double years = kReferenceAge * kReferenceAge - age * age;
    SpectralCurve aged;
    aged.knots = response.knots;
    aged.value = [original = std::move(response.value), years](double nm) {
        const double value = original(nm);
        return value != 0.0 ? value * std::pow(10.0, years * agingDensity(nm)) : 0.0;
    };
    return aged;
}

void addScotopic(Picture& picture, std::vector<float> luminances) {
    std::erase_if(picture.planes, [](const Plane& plane) { return plane.name == kScotopicPlane; });
    picture.planes.push_back({std::string(kScotopicPlane), "cd.m^-2", std::move(luminances)});
}

void fromSpectra(const node::Node& node, Picture& picture, double age) {
    const Film& film = picture.film;
    const Observer observer = observerByName(node.choice("observer"));
    XyzImage& image = picture.image;
    image.width = picture.view.width;
    image.height = picture.view.height;
    image.values.resize(3 * std::size_t(image.width) * std::size_t(image.height));
    std::vector<std::vector<double>> weights;
    for (int c = 0; c < 3; ++c) {
        const SpectralCurve response = throughLens(scaledCurve(matchingFunction(observer, c), kMaxEfficacy), age);
        weights.push_back(bandWeights(film, response));
    }
    const SpectralCurve rods = throughLens(scaledCurve(scotopicEfficiency(), kMaxScotopicEfficacy), age);
    weights.push_back(bandWeights(film, rods));
    std::vector<std::vector<float>> sums;
    opencl::Attempt attempt(node.label());
    if (!attempt([&](opencl::Device& device) { sums = weighedSumsByOpenCl(device, film, picture.view, weights); })) {
        for (const std::vector<double>& response : weights) sums.push_back(weighedSum(film, picture.view, response));
    }
    for (std::size_t c = 0; c < 3; ++c) {
        for (std::size_t i = 0; i < sums[c].size(); ++i) image.values[3 * i + c] = sums[c][i];
    }
    addScotopic(picture, std::move(sums[3]));
}

void filterSpectralToHv(const node::Node& node, Picture& picture) {
    const bool isAged = node.choice("ocular_lens") == "aged";
    if (hasSpectralChannels(picture.film)) {
        return fromSpectra(node, picture, isAged ? node.real("age") : kReferenceAge);
    }
    if (isAged) log::warning(node.label(), "the sensor has no spectral channels; the age of the lens is left out");
    log::info(node.label(), "the sensor has no spectral channels; scotopic luminances are approximated from XYZ");
    picture.image = toXyz(picture.film, picture.view, node.choice("observer"));
    std::erase_if(picture.planes, [](const Plane& plane) { return plane.name == kScotopicPlane; });
    addScotopic(picture, scotopicLuminances(picture));
}

const bool kKnown = filterClasses().add("spectraltohv", filterSpectralToHv);

}  // namespace
}  // namespace nemra::core
