#include <cmath>

#include "engine/core/spectrum/observer.h"
#include "engine/core/spectrum/planck.h"
#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

double planckRadiance(double lambdaNm, double temperature) noexcept {
    constexpr double kH = 6.62607015e-34;
    constexpr double kC = 299792458.0;
    constexpr double kB = 1.380649e-23;
    const double lambda = lambdaNm * 1.0e-9;
    const double c1 = 2.0 * kH * kC * kC;
    const double exponent = kH * kC / (lambda * kB * temperature);
    return c1 / (std::pow(lambda, 5) * std::expm1(exponent)) * 1.0e-9;  // per nm
}

double planckPeak(double temperature) noexcept { return 2.897771955e6 / temperature; }

namespace {

SpectralCurve makeBlackbody(const node::Node& node, Translation& translation) {
    const double temperature = node.real("temperature");
    SpectralCurve curve{[temperature](double lambda) { return planckRadiance(lambda, temperature); }, {}};
    const std::string& normalization = node.choice("normalization");
    if (normalization == "peak") return scaledCurve(std::move(curve), 1.0 / planckRadiance(planckPeak(temperature), temperature));
    if (normalization == "luminance") {
        const double luminance = curveLuminance(curve);
        if (!(luminance > 0.0) || !std::isfinite(luminance)) {
            translation.warn(node, "is too cold to have a luminance; it counts as zero");
            return constantCurve(0.0);
        }
        return scaledCurve(std::move(curve), node.real("luminance") / luminance);
    }
    return curve;
}

const bool kKnown = spectrumClasses().add("blackbody", makeBlackbody);

}  // namespace
}  // namespace nemra::core
