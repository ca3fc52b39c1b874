#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "engine/core/spectrum/observer.h"
#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {
namespace {

constexpr int kKnots = 48;  // every 10 nm from 360 to 830 nm
constexpr int kRows = kKnots + 3;
using Matrix = std::array<std::array<double, kRows + 1>, kRows>;

/// Gauss with row pivoting. Small and well scaled, called once per node.
void solve(Matrix& m) {
    for (int c = 0; c < kRows; ++c) {
        int pivot = c;
        for (int r = c + 1; r < kRows; ++r) {
            if (std::abs(m[r][c]) > std::abs(m[pivot][c])) pivot = r;
        }
        std::swap(m[c], m[pivot]);
        if (m[c][c] == 0.0) continue;
        for (int r = 0; r < kRows; ++r) {
            if (r == c) continue;
            const double f = m[r][c] / m[c][c];
            if (f == 0.0) continue;
            for (int k = c; k <= kRows; ++k) m[r][k] -= f * m[c][k];
        }
    }
    for (int r = 0; r < kRows; ++r) m[r][kRows] = m[r][r] == 0.0 ? 0.0 : m[r][kRows] / m[r][r];
}

/// The smoothest curve (least sum of squared second differences, 10 nm knots, linear between) with the wanted tristimulus values
/// under the 2 degree observer, where a flat spectrum of 1 has 1, 1, 1. Knots that come out negative are held at zero, one round
/// after another, so that every colour that a spectrum can have is met by one without negative values.
SpectralCurve makeCieXyz(const node::Node& node, Translation& translation) {
    const double wanted[3] = {node.real("x"), node.real("y"), node.real("z")};
    const double step = (kVisibleLast - kVisibleFirst) / (kKnots - 1);
    double weight[3][kKnots];
    for (int c = 0; c < 3; ++c) {
        const SpectralCurve observer = matchingFunction(Observer::cie1931, c);
        const double norm = integrate(observer, kVisibleFirst, kVisibleLast);
        for (int i = 0; i < kKnots; ++i) {
            const double center = kVisibleFirst + step * i;
            const SpectralCurve hat{[=](double l) { return std::max(0.0, 1.0 - std::abs(l - center) / step); },
                                    {center - step, center, center + step}};
            weight[c][i] = integrate(observer, hat, kVisibleFirst, kVisibleLast) / norm;
        }
    }
    auto values = std::make_shared<std::array<double, kKnots>>();
    std::array<bool, kKnots> held{};
    for (int round = 0; round < kKnots; ++round) {
        Matrix m{};
        for (int i = 0; i < kKnots; ++i) m[i][i] = 1.0e-9;
        for (int i = 1; i + 1 < kKnots; ++i) {
            const int at[3] = {i - 1, i, i + 1};
            const double d[3] = {1.0, -2.0, 1.0};
            for (int a = 0; a < 3; ++a) {
                for (int b = 0; b < 3; ++b) m[at[a]][at[b]] += d[a] * d[b];
            }
        }
        for (int c = 0; c < 3; ++c) {
            for (int i = 0; i < kKnots; ++i) m[i][kKnots + c] = m[kKnots + c][i] = weight[c][i];
            m[kKnots + c][kRows] = wanted[c];
        }
        for (int i = 0; i < kKnots; ++i) {
            if (!held[i]) continue;
            m[i].fill(0.0);
            m[i][i] = 1.0;
        }
        solve(m);
        bool again = false;
        for (int i = 0; i < kKnots; ++i) {
            (*values)[i] = std::max(0.0, m[i][kRows]);
            if (!held[i] && m[i][kRows] < 0.0) held[i] = again = true;
        }
        if (!again) break;
    }
    double worst = 0.0;
    for (int c = 0; c < 3; ++c) {
        double got = 0.0;
        for (int i = 0; i < kKnots; ++i) got += weight[c][i] * (*values)[i];
        worst = std::max(worst, std::abs(got - wanted[c]));
    }
    if (worst > 1.0e-3 * std::max({std::abs(wanted[0]), std::abs(wanted[1]), std::abs(wanted[2]), 1.0e-12})) {
        translation.warn(node, "no spectrum without negative values has that colour; a near one is taken");
    }
    std::vector<double> knots;
    for (int i = 0; i < kKnots; ++i) knots.push_back(kVisibleFirst + step * i);
    return {[values, step](double lambda) {
                const double x = std::clamp((lambda - kVisibleFirst) / step, 0.0, kKnots - 1.0);
                const int i = std::min(static_cast<int>(x), kKnots - 2);
                return (*values)[i] + (x - i) * ((*values)[i + 1] - (*values)[i]);
            },
            std::move(knots)};
}

const bool kKnown = spectrumClasses().add("cie-xyz", makeCieXyz);

}  // namespace
}  // namespace nemra::core
