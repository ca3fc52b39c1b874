#include "engine/core/spectrum/grid.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace nemra::core {

namespace {

/// Integral over [0, 1] of curve(a + t h) and of curve(a + t h) t dt, five-point Gauss between the knots.
void moments(const SpectralCurve& curve, double a, double h, double& zeroth, double& first) {
    constexpr double kX[5] = {-0.906179845938663993, -0.538469310105683091, 0.0, 0.538469310105683091, 0.906179845938663993};
    constexpr double kW[5] = {0.236926885056189088, 0.478628670499366468, 0.568888888888888889, 0.478628670499366468,
                              0.236926885056189088};
    zeroth = first = 0.0;
    auto knot = std::upper_bound(curve.knots.begin(), curve.knots.end(), a);
    for (double from = a; from < a + h;) {
        const double to = knot != curve.knots.end() ? std::min(*knot++, a + h) : a + h;
        const double half = 0.5 * (to - from);
        for (int i = 0; i < 5 && half > 0.0; ++i) {
            const double x = from + half * (1.0 + kX[i]);
            const double part = 0.5 * kW[i] * (2.0 * half / h) * curve(x);
            zeroth += part;
            first += part * (x - a) / h;
        }
        from = to;
    }
}

}  // namespace

int SpectralTables::add(const SpectralCurve& curve) {
    std::vector<SpectralCell> table(grid_.cells);
    double total = 0.0;
    double misplaced = 0.0;
    for (int i = 0; i < grid_.cells; ++i) {
        double m0 = 0.0;
        double m1 = 0.0;
        moments(curve, grid_.border(i), grid_.step, m0, m1);
        double rise = 12.0 * m1 - 6.0 * m0;
        // A steep feature inside a cell would make the line negative at one end; no light is negative.
        const double wanted = rise;
        if (m0 >= 0.0) rise = std::clamp(rise, -2.0 * m0, 2.0 * m0);
        misplaced += std::abs(wanted - rise) / 12.0;
        total += std::abs(m0);
        if (!std::isfinite(m0) || !std::isfinite(rise)) m0 = rise = 0.0;
        table[i] = {static_cast<float>(m0 - 0.5 * rise), static_cast<float>(rise)};
    }
    tooCoarse_ = tooCoarse_ || misplaced > 1.0e-3 * total;
    const std::size_t bytes = table.size() * sizeof(SpectralCell);
    for (int i = 0; i < count(); ++i) {
        if (std::memcmp(this->table(i), table.data(), bytes) == 0) return i;
    }
    cells_.insert(cells_.end(), table.begin(), table.end());
    return count() - 1;
}

double SpectralTables::mean(int index, int cell) const noexcept {
    const SpectralCell& c = table(index)[cell];
    return c.value + 0.5 * static_cast<double>(c.rise);
}

double SpectralTables::maximum(int index) const noexcept {
    double most = 0.0;
    for (int i = 0; i < grid_.cells; ++i) {
        const SpectralCell& c = table(index)[i];
        most = std::max({most, static_cast<double>(c.value), static_cast<double>(c.value) + c.rise});
    }
    return most;
}

}  // namespace nemra::core
