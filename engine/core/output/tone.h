/// What tone curves share: luminances in, display values out, chromaticities kept.
#pragma once

#include <cmath>

#include "engine/core/output/picture.h"

namespace nemra::core {

/// exp of the mean of ln L over the pixels that have light; 0 if there are none. Black pixels are left out, since their
/// logarithm would decide the mean.
double logAverage(const XyzImage& image);

/// The largest finite luminance; 0 for an image without light.
double largestLuminance(const XyzImage& image);

/// Multiplies the X, Y, Z of each pixel by curve(Y) / Y. Pixels without light, or with a value that isn't finite, become black.
template <class Curve>
void mapLuminance(XyzImage& image, Curve&& curve) {
    for (std::size_t i = 0; i + 2 < image.values.size(); i += 3) {
        const double luminance = image.values[i + 1];
        const double factor = luminance > 0.0 && std::isfinite(luminance) ? curve(luminance) / luminance : 0.0;
        for (std::size_t c = 0; c < 3; ++c)
            image.values[i + c] = factor > 0.0 ? static_cast<float>(image.values[i + c] * factor) : 0.0F;
    }
}

}  // namespace nemra::core
