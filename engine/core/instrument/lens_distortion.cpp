#include "engine/core/instrument/lens_distortion.h"

#include <cmath>
#include <limits>
#include <numbers>

namespace nemra::core {

namespace {

constexpr double kFarthest = 50.0;  ///< image radius over focal length: more than 88 degrees from the axis
constexpr double kGrowth = 1.02;    ///< of the radii at which folds are looked for
constexpr int kAzimuths = 32;
constexpr int kMaxSteps = 60;
constexpr double kExact = 1.0e-13;  ///< of the radius

}  // namespace

LensDistortion::LensDistortion(double k1, double k2, double k3, double p1, double p2)
    : k1_(k1), k2_(k2), k3_(k3), p1_(p1), p2_(p2), reach_(std::numeric_limits<double>::infinity()) {
    if (k1 == 0.0 && k2 == 0.0 && k3 == 0.0 && p1 == 0.0 && p2 == 0.0) return;
    for (double r = 0.01; r < kFarthest; r *= kGrowth) {
        for (int i = 0; i < kAzimuths; ++i) {
            const double azimuth = 2.0 * std::numbers::pi * i / kAzimuths;
            const Jacobian here = jacobian({r * std::cos(azimuth), r * std::sin(azimuth)});
            if (here.determinant() > 0.0 && here.xx + here.yy > 0.0) continue;
            reach_ = r;
            return;
        }
    }
}

LensDistortion LensDistortion::of(const node::Node& instrument) {
    if (instrument.choice("distortion") != "brown") return {0.0, 0.0, 0.0, 0.0, 0.0};
    return {instrument.real("k1"), instrument.real("k2"), instrument.real("k3"), instrument.real("p1"), instrument.real("p2")};
}

ImagePoint LensDistortion::distorted(ImagePoint ideal) const noexcept {
    const auto [x, y] = ideal;
    const double r2 = x * x + y * y;
    const double radial = 1.0 + r2 * (k1_ + r2 * (k2_ + r2 * k3_));
    return {x * radial + 2.0 * p1_ * x * y + p2_ * (r2 + 2.0 * x * x), y * radial + p1_ * (r2 + 2.0 * y * y) + 2.0 * p2_ * x * y};
}

LensDistortion::Jacobian LensDistortion::jacobian(ImagePoint ideal) const noexcept {
    const auto [x, y] = ideal;
    const double r2 = x * x + y * y;
    const double radial = 1.0 + r2 * (k1_ + r2 * (k2_ + r2 * k3_));
    const double slope = 2.0 * (k1_ + r2 * (2.0 * k2_ + r2 * 3.0 * k3_));  // of `radial` along r, over r
    return {radial + slope * x * x + 2.0 * p1_ * y + 6.0 * p2_ * x, slope * x * y + 2.0 * p1_ * x + 2.0 * p2_ * y,
            radial + slope * y * y + 6.0 * p1_ * y + 2.0 * p2_ * x};
}

std::optional<ImagePoint> LensDistortion::ideal(ImagePoint wanted) const noexcept {
    if (std::isinf(reach_) && k1_ == 0.0 && k2_ == 0.0 && k3_ == 0.0 && p1_ == 0.0 && p2_ == 0.0) return wanted;
    const double scale = std::hypot(wanted.x, wanted.y);
    const auto miss = [&](ImagePoint at) {
        const ImagePoint put = distorted(at);
        return ImagePoint{put.x - wanted.x, put.y - wanted.y};
    };
    // Newton's method from within the reach; a step that makes things worse, or leads out of it, is cut in half.
    const double start = scale < 0.5 * reach_ ? 1.0 : 0.5 * reach_ / scale;
    ImagePoint at{start * wanted.x, start * wanted.y};
    ImagePoint error = miss(at);
    double size = std::hypot(error.x, error.y);
    for (int step = 0; step < kMaxSteps && size > kExact * scale; ++step) {
        const Jacobian slope = jacobian(at);
        const double determinant = slope.determinant();
        if (!(determinant > 0.0)) return std::nullopt;
        const double dx = (slope.yy * error.x - slope.xy * error.y) / determinant;
        const double dy = (slope.xx * error.y - slope.xy * error.x) / determinant;
        double part = 1.0;
        for (; part > 1.0e-9; part *= 0.5) {
            const ImagePoint next{at.x - part * dx, at.y - part * dy};
            const ImagePoint nextError = miss(next);
            const double nextSize = std::hypot(nextError.x, nextError.y);
            if (!(nextSize < size) || !(std::hypot(next.x, next.y) < reach_)) continue;
            at = next;
            error = nextError;
            size = nextSize;
            break;
        }
        if (!(part > 1.0e-9)) break;
    }
    if (!(size <= 1.0e-9 * scale)) return std::nullopt;
    return at;
}

}  // namespace nemra::core
