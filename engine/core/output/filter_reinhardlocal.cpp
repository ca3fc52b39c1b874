// Reinhard, Stark, Shirley, Ferwerda, "Photographic Tone Reproduction for Digital Images", ACM Transactions on Graphics 21(3),
// 2002, equations 5 to 9. With L = key / (log-average luminance) times luminance, surroundings of scale s (pixels) are
//   V1(s) = L convolved with exp(-r^2 / (alpha s)^2) / (pi (alpha s)^2), alpha = 1 / (2 sqrt 2); V2(s) = V1(1.6 s)
//   V(s) = (V1 - V2) / (2^phi key / s^2 + V1)
// and Ld = L / (1 + V1(sm)) with sm the largest scale up to which |V| stays below epsilon.
#include "engine/core/output/convolve.h"
#include "engine/core/output/tone.h"

namespace nemra::core {
namespace {

constexpr double kRatio = 1.6;  ///< of two scales, and of surround and centre

/// Standard deviation of the Gaussian of scale s: exp(-r^2 / (alpha s)^2) is one of alpha s / sqrt 2.
double sigmaOf(double scale) { return scale / (2.0 * std::sqrt(2.0)) / std::sqrt(2.0); }

void filterReinhardLocal(const node::Node& node, Picture& picture) {
    XyzImage& image = picture.image;
    const double average = logAverage(image);
    if (!(average > 0.0)) return;
    const double key = node.real("key");
    const double threshold = node.real("threshold");
    const double sharpening = std::exp2(node.real("sharpening")) * key;
    const int scales = node.integer("scales");
    const std::size_t pixels = image.values.size() / 3;

    std::vector<float> level(pixels);
    for (std::size_t i = 0; i < pixels; ++i) {
        const double luminance = image.values[3 * i + 1];
        level[i] = luminance > 0.0 && std::isfinite(luminance) ? static_cast<float>(key / average * luminance) : 0.0F;
    }
    const auto surroundings = [&](double scale) {
        std::vector<float> blurred = level;
        blur(blurred.data(), image.width, image.height, 1, sigmaOf(scale), picture.fast);
        return blurred;
    };
    std::vector<float> chosen = surroundings(1.0);
    std::vector<char> open(pixels, 1);  // no edge met yet
    std::vector<float> centre = chosen;
    double scale = 1.0;
    for (int i = 0; i + 1 < scales; ++i, scale *= kRatio) {
        std::vector<float> surround = surroundings(scale * kRatio);
        for (std::size_t p = 0; p < pixels; ++p) {
            if (!open[p]) continue;
            const double difference = double(centre[p]) - double(surround[p]);
            if (std::abs(difference / (sharpening / (scale * scale) + centre[p])) < threshold) {
                chosen[p] = centre[p];
            } else {
                open[p] = 0;
            }
        }
        centre = std::move(surround);
    }
    for (std::size_t p = 0; p < pixels; ++p) {
        const double factor = key / average / (1.0 + chosen[p]);
        for (std::size_t c = 0; c < 3; ++c) image.values[3 * p + c] = static_cast<float>(image.values[3 * p + c] * factor);
    }
}

const bool kKnown = filterClasses().add("reinhardlocal", filterReinhardLocal);

}  // namespace
}  // namespace nemra::core
