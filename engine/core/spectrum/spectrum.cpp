#include "engine/core/spectrum/spectrum.h"

#include <algorithm>
#include <cmath>

#include "engine/core/spectrum/observer.h"

namespace nemra::core {

namespace {

/// Calls body(from, to) for the panels between the bounds, cut at all knots.
template <class Body>
void forPanels(std::vector<double> knots, double from, double to, double widest, Body&& body) {
    knots.push_back(from);
    knots.push_back(to);
    std::sort(knots.begin(), knots.end());
    for (std::size_t i = 1; i < knots.size(); ++i) {
        const double a = std::max(knots[i - 1], from);
        const double b = std::min(knots[i], to);
        if (!(b > a)) continue;
        const int count = std::max(1, static_cast<int>(std::ceil((b - a) / widest)));
        for (int k = 0; k < count; ++k) body(a + (b - a) * k / count, a + (b - a) * (k + 1) / count);
    }
}

// Three-point Gauss-Legendre: exact to degree 5, and never at the end of a panel, where a curve may jump.
constexpr double kGaussX = 0.774596669241483377;
constexpr double kGaussW[3] = {5.0 / 18.0, 8.0 / 18.0, 5.0 / 18.0};

template <class Function>
double gauss(double a, double b, Function&& f) {
    const double mid = 0.5 * (a + b);
    const double half = 0.5 * (b - a) * kGaussX;
    return (b - a) * (kGaussW[0] * f(mid - half) + kGaussW[1] * f(mid) + kGaussW[2] * f(mid + half));
}

}  // namespace

SpectralCurve constantCurve(double value) {
    return {[value](double) { return value; }, {}};
}

SpectralCurve scaledCurve(SpectralCurve curve, double factor) {
    return {[inner = std::move(curve.value), factor](double lambda) { return factor * inner(lambda); }, std::move(curve.knots)};
}

double integrate(const SpectralCurve& curve, double fromNm, double toNm) {
    double sum = 0.0;
    forPanels(curve.knots, fromNm, toNm, 1.0, [&](double a, double b) { sum += gauss(a, b, curve.value); });
    return sum;
}

double integrate(const SpectralCurve& curve, const SpectralCurve& weight, double fromNm, double toNm) {
    std::vector<double> knots = curve.knots;
    knots.insert(knots.end(), weight.knots.begin(), weight.knots.end());
    double sum = 0.0;
    forPanels(std::move(knots), fromNm, toNm, 1.0,
              [&](double a, double b) { sum += gauss(a, b, [&](double lambda) { return curve(lambda) * weight(lambda); }); });
    return sum;
}

ClassTable<MakeSpectrum>& spectrumClasses() {
    static ClassTable<MakeSpectrum> table("spectrum");
    return table;
}

SpectralCurve makeSpectrum(const NodePointer& node, Translation& translation) {
    const NodePointer resolved = translation.resolve(node);
    if (!resolved) return constantCurve(0.0);
    if (const MakeSpectrum make = spectrumClasses().find(resolved->type())) return make(*resolved, translation);
    translation.warnUnlit(*resolved, "spectra of this class aren't simulated yet; it counts as zero");
    return constantCurve(0.0);
}

SpectralCurve makeRadiance(const NodePointer& node, const node::Node& owner, Translation& translation) {
    SpectralCurve curve = makeSpectrum(node, translation);
    const auto isLight = [&](double lambda) { return curve(lambda) >= 0.0; };
    bool cut = !std::all_of(curve.knots.begin(), curve.knots.end(), isLight);
    for (double lambda = kVisibleFirst; lambda <= kVisibleLast && !cut; lambda += 1.0) cut = !isLight(lambda);
    if (cut) translation.warn(owner, "its radiance is below zero at some wavelengths; it is cut there");
    curve.value = [inner = std::move(curve.value)](double lambda) {
        const double value = inner(lambda);
        return value > 0.0 ? value : 0.0;  // what is no number counts as 0
    };
    return curve;
}

}  // namespace nemra::core
