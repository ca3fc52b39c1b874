#include <algorithm>
#include <cmath>

#include "engine/core/data/tables.h"
#include "engine/core/spectrum/spectrum.h"
#include "engine/node/color.h"

namespace nemra::core {
namespace {

/// Linear sRGB weights on the basis of Mallett and Yuksel (2019). The basis sums to 1, so white is a flat spectrum; beyond its
/// ends (380 and 780 nm) the last value holds.
SpectralCurve makeRgb(const node::Node& node, Translation& translation) {
    const auto linear = node::convert(node.color("color"), "linear_srgb");
    if (!linear) {
        translation.warn(node, "its colour space isn't known; it counts as black");
        return constantCurve(0.0);
    }
    const std::array<float, 3> rgb = linear->coords;
    std::vector<double> knots;
    for (int i = 0; i < data::kMallettCount; ++i) knots.push_back(data::kMallettFirst + data::kMallettStep * i);
    return {[rgb](double lambda) {
                const double x = std::clamp((lambda - data::kMallettFirst) / data::kMallettStep, 0.0, data::kMallettCount - 1.0);
                const int i = std::min(static_cast<int>(x), data::kMallettCount - 2);
                const double t = x - i;
                double sum = 0.0;
                for (int c = 0; c < 3; ++c) {
                    sum += rgb[c] * ((1.0 - t) * data::kMallett2019[i][c] + t * data::kMallett2019[i + 1][c]);
                }
                return std::max(0.0, sum);  // colours outside sRGB would be negative somewhere
            },
            std::move(knots)};
}

const bool kKnown = spectrumClasses().add("rgb", makeRgb);

}  // namespace
}  // namespace nemra::core
