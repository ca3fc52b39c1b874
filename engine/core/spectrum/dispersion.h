/// Refractive index of transparent media by Cauchy's formula.
#pragma once

#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

/// n(lambda) = a + b / lambda^2 + c / lambda^4; lambda in nm, b in nm2, c in nm4.
struct Cauchy {
    double a = 1.0;
    double b = 0.0;
    double c = 0.0;
    double operator()(double lambdaNm) const noexcept {
        const double q = 1.0 / (lambdaNm * lambdaNm);
        return a + q * (b + q * c);
    }
};

/// The two-term formula through n_d with Abbe number v_d = (n_d - 1) / (n_F - n_C); lines F, d, C at 486.1327, 587.5618 and
/// 656.2725 nm.
Cauchy cauchyFromAbbe(double nd, double vd) noexcept;

}  // namespace nemra::core
