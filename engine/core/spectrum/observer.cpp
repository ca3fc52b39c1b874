#include "engine/core/spectrum/observer.h"

#include <cmath>

#include "engine/core/data/tables.h"

namespace nemra::core {

Observer observerByName(std::string_view option) { return option == "cie1964_10deg" ? Observer::cie1964 : Observer::cie1931; }

SpectralCurve matchingFunction(Observer observer, int component) {
    const auto* rows = observer == Observer::cie1964 ? data::kCie1964 : data::kCie1931;
    std::vector<double> knots;
    for (int i = 0; i < data::kObserverCount; ++i) knots.push_back(data::kObserverFirst + i);
    return {[rows, component](double lambda) {
                const double x = lambda - data::kObserverFirst;
                if (!(x >= 0.0 && x <= data::kObserverCount - 1)) return 0.0;
                const int i = std::min(static_cast<int>(x), data::kObserverCount - 2);
                const double t = x - i;
                return (1.0 - t) * rows[i][component] + t * rows[i + 1][component];
            },
            std::move(knots)};
}

std::array<double, 3> curveXyz(const SpectralCurve& radiance, Observer observer) {
    std::array<double, 3> xyz{};
    for (int c = 0; c < 3; ++c) {
        xyz[c] = kMaxEfficacy * integrate(radiance, matchingFunction(observer, c), kVisibleFirst, kVisibleLast);
    }
    return xyz;
}

double curveLuminance(const SpectralCurve& radiance) {
    return kMaxEfficacy * integrate(radiance, matchingFunction(Observer::cie1931, 1), kVisibleFirst, kVisibleLast);
}

}  // namespace nemra::core
