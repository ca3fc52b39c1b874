#include "engine/core/output/tone.h"

#include <algorithm>

namespace nemra::core {

double logAverage(const XyzImage& image) {
    double sum = 0.0;
    std::size_t lit = 0;
    for (std::size_t i = 1; i < image.values.size(); i += 3) {
        const double luminance = image.values[i];
        if (!(luminance > 0.0) || !std::isfinite(luminance)) continue;
        sum += std::log(luminance);
        ++lit;
    }
    return lit > 0 ? std::exp(sum / static_cast<double>(lit)) : 0.0;
}

double largestLuminance(const XyzImage& image) {
    double largest = 0.0;
    for (std::size_t i = 1; i < image.values.size(); i += 3) {
        const double luminance = image.values[i];
        if (std::isfinite(luminance)) largest = std::max(largest, luminance);
    }
    return largest;
}

}  // namespace nemra::core
