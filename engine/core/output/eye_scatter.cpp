#include "engine/core/output/eye_scatter.h"

#include <cmath>
#include <numbers>

namespace nemra::core {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

/// Weights of the terms f0, f1, f2, f3 of Spencer et al.
PointSpread spencer(double w0, double w1, double w2, double w3) {
    return [=](double degrees) {
        const double f0 = 2.61e6 * std::exp(-std::pow(degrees / 0.02, 2));
        const double f1 = 20.91 / std::pow(degrees + 0.02, 3);
        const double f2 = 72.37 / std::pow(degrees + 0.02, 2);
        const double f3 = 436.9 * std::exp(-std::pow(degrees - 3.0, 2));  // the corona about 3 degrees, at 568 nm
        return w0 * f0 + w1 * f1 + w2 * f2 + w3 * f3;
    };
}

}  // namespace

PointSpread cieGlare(double age, double pigmentation) {
    const double years = std::pow(age / 70.0, 4);
    return [years, pigmentation](double degrees) {
        const auto term = [&](double width) { return 1.0 + std::pow(degrees / width, 2); };
        const double core = 9.2e6 / std::pow(term(0.0046), 1.5) + 1.5e5 / std::pow(term(0.045), 1.5);
        const double lens = 400.0 / term(0.1) + 3.0e-8 * degrees * degrees;
        const double iris = 1300.0 / std::pow(term(0.1), 1.5) + 0.8 / std::sqrt(term(0.1));
        return (1.0 - 0.08 * years) * core + (1.0 + 1.6 * years) * (lens + pigmentation * iris) + 2.5e-3 * pigmentation;
    };
}

PointSpread mesopicGlare() { return spencer(0.368, 0.478, 0.138, 0.016); }
PointSpread scotopicGlare() { return spencer(0.282, 0.478, 0.207, 0.033); }

double encircled(const PointSpread& spread, double degrees) {
    // Trapezoids in the logarithm of the angle, over which the functions vary smoothly; nothing is left below 1e-6 degrees.
    constexpr int kSteps = 4000;
    constexpr double kSmallest = 1.0e-6;
    if (!(degrees > kSmallest)) return 0.0;
    const double step = std::log(degrees / kSmallest) / kSteps;
    double sum = 0.0;
    for (int i = 0; i <= kSteps; ++i) {
        const double angle = kSmallest * std::exp(step * i);
        const double weight = i == 0 || i == kSteps ? 0.5 : 1.0;
        sum += weight * spread(angle) * 2.0 * std::numbers::pi * std::sin(angle * kDegree) * angle * kDegree;
    }
    return sum * step;
}

}  // namespace nemra::core
