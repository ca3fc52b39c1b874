#include <algorithm>
#include <cmath>

#include "engine/core/output/filters.h"

namespace nemra::core {

namespace {

void scale(XyzImage& image, double gain) {
    for (float& value : image.values) value = static_cast<float>(value * gain);
}

const bool kGainKnown = filterClasses().add("gain", filterGain);
const bool kAutoGainKnown = filterClasses().add("averageautogain", filterAverageAutoGain);

}  // namespace

void filterGain(const node::Node& node, Picture& picture) { scale(picture.image, node.real("gain")); }

void filterAverageAutoGain(const node::Node& node, Picture& picture) {
    scale(picture.image, averageAutoGain(picture.image, node.real("target")));
}

double averageAutoGain(const XyzImage& image, double target) {
    const std::size_t pixels = image.values.size() / 3;
    // The mean of min(1, gain Y) rises with the gain along straight pieces that get flatter. So Newton's method from the left
    // never overshoots, and ends exactly when it has found the right piece.
    double gain = 0.0;
    for (int step = 0; step < 64; ++step) {
        double slope = 0.0;
        double white = 0.0;
        for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
            const double luminance = image.values[3 * pixel + 1];
            if (!(luminance > 0.0) || !std::isfinite(luminance)) continue;
            if (gain * luminance >= 1.0) {
                white += 1.0;
            } else {
                slope += luminance;
            }
        }
        const double wanted = target * static_cast<double>(pixels) - white;
        if (!(slope > 0.0)) break;  // no light, or all that is lit is white already
        const double next = wanted / slope;
        if (!(next > gain * (1.0 + 1.0e-9))) break;
        gain = next;
    }
    return gain > 0.0 ? gain : 1.0;
}

}  // namespace nemra::core
