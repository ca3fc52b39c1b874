#include "engine/core/spectrum/samples.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace nemra::core {
namespace {

struct Samples {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> slope;  ///< for cubic interpolation
    bool hold = false;

    /// Index i with x[i] <= lambda < x[i + 1]; lambda lies inside the table.
    std::size_t interval(double lambda) const {
        const auto above = std::upper_bound(x.begin() + 1, x.end() - 1, lambda);
        return static_cast<std::size_t>(above - x.begin()) - 1;
    }
    bool outside(double lambda) const { return lambda < x.front() || lambda > x.back(); }
    double beyond(double lambda) const { return !hold ? 0.0 : lambda < x.front() ? y.front() : y.back(); }
};

/// Slopes that keep the curve monotone between samples, so that it never overshoots: Fritsch and Butland (1984).
void fitSlopes(Samples& samples) {
    const std::size_t n = samples.x.size();
    samples.slope.assign(n, 0.0);
    if (n < 2) return;
    std::vector<double> h(n - 1), d(n - 1);
    for (std::size_t i = 0; i + 1 < n; ++i) {
        h[i] = samples.x[i + 1] - samples.x[i];
        d[i] = (samples.y[i + 1] - samples.y[i]) / h[i];
    }
    samples.slope[0] = d[0];
    samples.slope[n - 1] = d[n - 2];
    for (std::size_t i = 1; i + 1 < n; ++i) {
        if (d[i - 1] * d[i] <= 0.0) continue;
        const double a = (h[i - 1] + 2.0 * h[i]) / (3.0 * (h[i - 1] + h[i]));
        samples.slope[i] = d[i - 1] * d[i] / (a * d[i] + (1.0 - a) * d[i - 1]);
    }
}

double linear(const Samples& s, double lambda) {
    const std::size_t i = s.interval(lambda);
    const double t = (lambda - s.x[i]) / (s.x[i + 1] - s.x[i]);
    return s.y[i] + t * (s.y[i + 1] - s.y[i]);
}

double nearest(const Samples& s, double lambda) {
    const std::size_t i = s.interval(lambda);
    return lambda - s.x[i] < s.x[i + 1] - lambda ? s.y[i] : s.y[i + 1];
}

double cubic(const Samples& s, double lambda) {
    const std::size_t i = s.interval(lambda);
    const double h = s.x[i + 1] - s.x[i];
    const double t = (lambda - s.x[i]) / h;
    const double u = 1.0 - t;
    return u * u * (1.0 + 2.0 * t) * s.y[i] + t * t * (3.0 - 2.0 * t) * s.y[i + 1] +
           h * t * u * (u * s.slope[i] - t * s.slope[i + 1]);
}

}  // namespace

Interpolation interpolationByName(std::string_view option) {
    if (option == "nearest") return Interpolation::nearest;
    return option == "cubic" ? Interpolation::cubic : Interpolation::linear;
}

std::vector<std::pair<double, double>> cleanSamples(const std::vector<double>& wavelengths, const std::vector<double>& values,
                                                    const node::Node& node, Translation& translation) {
    const auto isBefore = [](const auto& a, const auto& b) { return a.first < b.first; };
    std::vector<std::pair<double, double>> rows;
    for (std::size_t i = 0; i < std::min(wavelengths.size(), values.size()); ++i) {
        const double x = wavelengths[i];
        if (std::isfinite(x) && std::isfinite(values[i]) && x > 0.0) rows.emplace_back(x, values[i]);
    }
    if (rows.size() != wavelengths.size()) {
        translation.warn(node, "rows without a positive wavelength and a finite value are left out");
    }
    if (!std::is_sorted(rows.begin(), rows.end(), isBefore)) {
        translation.warn(node, "the samples aren't in order of wavelength; they are sorted");
    }
    std::stable_sort(rows.begin(), rows.end(), isBefore);
    const auto last = std::unique(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.first == b.first; });
    if (last != rows.end()) translation.warn(node, "of samples at one wavelength the first counts");
    rows.erase(last, rows.end());
    return rows;
}

SpectralCurve sampledCurve(const std::vector<std::pair<double, double>>& rows, Interpolation interpolation, bool hold) {
    auto samples = std::make_shared<Samples>();
    for (const auto& [wavelength, value] : rows) {
        samples->x.push_back(wavelength);
        samples->y.push_back(value);
    }
    samples->hold = hold;
    if (rows.size() == 1) return constantCurve(hold ? samples->y[0] : 0.0);
    std::vector<double> knots = samples->x;
    auto* inside = &linear;
    if (interpolation == Interpolation::nearest) {
        inside = &nearest;
        for (std::size_t i = 1; i < samples->x.size(); ++i) knots[i] = 0.5 * (samples->x[i - 1] + samples->x[i]);
        knots.push_back(samples->x.back());
    } else if (interpolation == Interpolation::cubic) {
        inside = &cubic;
        fitSlopes(*samples);
    }
    return {[samples, inside](double lambda) {
                return samples->outside(lambda) ? samples->beyond(lambda) : inside(*samples, lambda);
            },
            std::move(knots)};
}

}  // namespace nemra::core
