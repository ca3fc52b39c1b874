// The light that the eye scatters: the picture convolved with a point-spread function of the eye, whose integral over all
// directions is made 1. Pixels count as equally large, as the one in the middle of the image; what is scattered from outside the
// image is missing, and what is scattered out of it is lost.
#include <cmath>
#include <numbers>

#include "engine/common/log.h"
#include "engine/core/opencl/attempt.h"
#include "engine/core/output/eye_scatter.h"
#include "engine/core/output/filters_opencl.h"
#include "engine/core/output/fourier.h"
#include "engine/core/output/parallel_rows.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/projection.h"

namespace nemra::core {
namespace {

constexpr double kDegree = std::numbers::pi / 180.0;
constexpr int kDraftCell = 4;  ///< pixels along a side of what counts as one in a draft

PointSpread spreadOf(const node::Node& node) {
    const std::string& state = node.choice("observer_state");
    if (state == "mesopic") return mesopicGlare();
    if (state == "scotopic") return scotopicGlare();
    return cieGlare(node.real("age"), node.real("pigmentation"));
}

/// Degrees across a pixel; 0, after a warning, where nothing tells.
double pixelDegrees(const node::Node& node, const Picture& picture) {
    if (node.choice("pixel_size") == "viewing") return 1.0 / node.real("pixels_per_degree");
    const auto projection = picture.raw ? projectionOf(*picture.raw) : nullptr;
    const double angle = projection ? pixelAngle(*projection, picture.view.width, picture.view.height) / kDegree : 0.0;
    if (!(angle > 0.0)) {
        log::warning(node.label(), "the instrument doesn't say how large a pixel is for the eye; the filter is left out");
        return 0.0;
    }
    return angle * picture.view.width / picture.image.width;  // after a resize
}

/// What a pixel gets from one that is (dx, dy) pixels away, as a share of the light.
class Kernel {
public:
    Kernel(const PointSpread& spread, double pixel)
        : spread_(spread),
          pixel_(pixel),
          total_(encircled(spread, 90.0)),
          own_(encircled(spread, pixel / std::sqrt(std::numbers::pi)) / total_) {}

    /// Of the pixel itself: that of the disc of the same area.
    double own() const noexcept { return own_; }
    double operator()(int dx, int dy) const {
        if (dx == 0 && dy == 0) return own_;
        const int parts = std::abs(dx) <= 3 && std::abs(dy) <= 3 ? 9 : 1;  // the function is steep near the point
        double sum = 0.0;
        for (int i = 0; i < parts; ++i) {
            for (int j = 0; j < parts; ++j) {
                sum += at(dx + (i + 0.5) / parts - 0.5, dy + (j + 0.5) / parts - 0.5);
            }
        }
        return sum / (parts * parts);
    }

private:
    double at(double dx, double dy) const {
        const double degrees = pixel_ * std::hypot(dx, dy);
        if (degrees >= 90.0) return 0.0;
        const double side = pixel_ * kDegree;
        const double angle = degrees * kDegree;
        return spread_(degrees) / total_ * side * side * std::sin(angle) / angle;  // a flat image makes rings too long
    }

    const PointSpread& spread_;
    double pixel_;
    double total_;
    double own_;
};

/// The shares for all distances within the picture, shares[dy * width + dx].
std::vector<float> sharesOf(const Kernel& kernel, int width, int height) {
    std::vector<float> shares(std::size_t(width) * std::size_t(height));
    parallelRows(height, [&](int y) {
        for (int x = 0; x < width; ++x) {
            shares[std::size_t(y) * std::size_t(width) + std::size_t(x)] = static_cast<float>(kernel(x, y));
        }
    });
    return shares;
}

/// The light that each pixel gets from all others.
void scatter(XyzImage& image, const std::vector<float>& shares) {
    using Complex = std::complex<float>;
    const int width = transformSize(2 * image.width);
    const int height = transformSize(2 * image.height);
    const auto cell = [&](int x, int y) { return std::size_t(y) * std::size_t(width) + std::size_t(x); };
    std::vector<Complex> spread(std::size_t(width) * std::size_t(height));
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            if (x == 0 && y == 0) continue;
            const float share = shares[std::size_t(y) * std::size_t(image.width) + std::size_t(x)];
            const int left = x == 0 ? 0 : width - x;
            const int above = y == 0 ? 0 : height - y;
            spread[cell(x, y)] = spread[cell(left, y)] = spread[cell(x, above)] = spread[cell(left, above)] = share;
        }
    }
    fourierTransform(spread, width, height, false);
    for (const std::size_t first : {std::size_t{0}, std::size_t{2}}) {  // X and Y as one complex picture, then Z
        std::vector<Complex> light(spread.size());
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const float* const xyz =
                    image.values.data() + 3 * (std::size_t(y) * std::size_t(image.width) + std::size_t(x)) + first;
                light[cell(x, y)] = {xyz[0], first == 0 ? xyz[1] : 0.0F};
            }
        }
        fourierTransform(light, width, height, false);
        for (std::size_t i = 0; i < light.size(); ++i) light[i] *= spread[i].real();  // symmetric, so its transform is real
        fourierTransform(light, width, height, true);
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                float* const xyz = image.values.data() + 3 * (std::size_t(y) * std::size_t(image.width) + std::size_t(x)) + first;
                xyz[0] = std::max(0.0F, light[cell(x, y)].real());
                if (first == 0) xyz[1] = std::max(0.0F, light[cell(x, y)].imag());
            }
        }
    }
}

/// Means over squares of `side` pixels.
XyzImage reduced(const XyzImage& image, int side) {
    XyzImage small{(image.width + side - 1) / side, (image.height + side - 1) / side, {}};
    small.values.resize(3 * std::size_t(small.width) * std::size_t(small.height));
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            const float* const from = image.values.data() + 3 * (std::size_t(y) * std::size_t(image.width) + std::size_t(x));
            float* const to =
                small.values.data() + 3 * (std::size_t(y / side) * std::size_t(small.width) + std::size_t(x / side));
            for (int c = 0; c < 3; ++c) to[c] += from[c] / static_cast<float>(side * side);
        }
    }
    return small;
}

void filterGlare(const node::Node& node, Picture& picture) {
    XyzImage& image = picture.image;
    const double pixel = pixelDegrees(node, picture);
    const auto strength = static_cast<float>(node.real("strength"));
    if (!(pixel > 0.0) || strength == 0.0F || image.values.empty()) return;
    for (float& value : image.values) {
        if (!std::isfinite(value)) value = 0.0F;  // one such value would spoil the whole transform
    }
    const int side = picture.fast ? kDraftCell : 1;
    const PointSpread spread = spreadOf(node);
    const Kernel kernel(spread, pixel * side);
    const auto own = static_cast<float>(kernel.own());
    XyzImage veil = side == 1 ? image : reduced(image, side);
    const std::vector<float> shares = sharesOf(kernel, veil.width, veil.height);
    opencl::Attempt attempt(node.label());
    if (!attempt([&](opencl::Device& device) { veil.values = scatterByOpenCl(device, veil, shares); })) scatter(veil, shares);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            float* const xyz = image.values.data() + 3 * (std::size_t(y) * std::size_t(image.width) + std::size_t(x));
            const float* const light =
                veil.values.data() + 3 * (std::size_t(y / side) * std::size_t(veil.width) + std::size_t(x / side));
            for (int c = 0; c < 3; ++c) xyz[c] += strength * (own * xyz[c] + light[c] - xyz[c]);
        }
    }
}

const bool kKnown = filterClasses().add("glare", filterGlare);

}  // namespace
}  // namespace nemra::core
