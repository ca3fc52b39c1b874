#include "engine/core/spectrum/dispersion.h"

namespace nemra::core {

Cauchy cauchyFromAbbe(double nd, double vd) noexcept {
    constexpr double kF = 486.1327;
    constexpr double kD = 587.5618;
    constexpr double kC = 656.2725;
    const double b = (nd - 1.0) / (vd * (1.0 / (kF * kF) - 1.0 / (kC * kC)));
    return {nd - b / (kD * kD), b, 0.0};
}

namespace {

SpectralCurve makeAbbenumber(const node::Node& node, Translation&) {
    return {cauchyFromAbbe(node.real("n_d"), node.real("v_d")), {}};
}

const bool kKnown = spectrumClasses().add("abbenumber", makeAbbenumber);

}  // namespace
}  // namespace nemra::core
