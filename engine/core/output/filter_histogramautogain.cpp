// Method "percentile": the factor that brings a percentile of the luminances to a display value.
//
// Method "adjustment": Ward, Rushmeier, Piatko, "A Visibility Matching Tone Reproduction Operator for High Dynamic Range Scenes",
// IEEE Trans. Visualization and Computer Graphics 3(4), 1997, with the linear ceiling of its section 4.3: the cumulative
// distribution P of ln L becomes ln Ld = ln Ldmin + (ln Ldmax - ln Ldmin) P(ln L), where the counts of the histogram are cut at
// T db / (ln Ldmax - ln Ldmin) until less than 2.5 % of the T counts is cut, so that no contrast grows beyond the scene's own. A
// scene with less range than the display is scaled by one factor. The histogram is that of means over one degree, about what the
// fovea sees, where the instrument tells how large a pixel is.
#include <algorithm>
#include <numbers>
#include <numeric>

#include "engine/core/output/projection.h"
#include "engine/core/output/tone.h"

namespace nemra::core {
namespace {

constexpr int kBins = 100;
constexpr double kTolerance = 0.025;
constexpr double kDarkest = 1.0e-4;  // cd/m2, where vision ends

void gainByPercentile(XyzImage& image, double percentile, double target) {
    std::vector<float> luminances;
    for (std::size_t i = 1; i < image.values.size(); i += 3) {
        if (std::isfinite(image.values[i])) luminances.push_back(image.values[i]);
    }
    if (luminances.empty()) return;
    const auto rank = luminances.begin() + std::lround(percentile / 100.0 * double(luminances.size() - 1));
    std::nth_element(luminances.begin(), rank, luminances.end());
    if (!(*rank > 0.0F)) return;
    const double gain = target / *rank;
    for (float& value : image.values) value = static_cast<float>(value * gain);
}

/// Pixels along a side of about one degree.
int fovealSide(const Picture& picture) {
    const auto projection = picture.raw ? projectionOf(*picture.raw) : nullptr;
    const double angle = projection ? pixelAngle(*projection, picture.view.width, picture.view.height) : 0.0;
    if (!(angle > 0.0)) return 1;
    const double pixels = std::numbers::pi / 180.0 / angle * picture.image.width / picture.view.width;
    return std::clamp(static_cast<int>(std::lround(pixels)), 1, std::max(1, std::min(picture.image.width, picture.image.height)));
}

/// ln of the mean luminances of squares of that side.
std::vector<double> fovealLogs(const XyzImage& image, int side) {
    std::vector<double> logs;
    for (int top = 0; top < image.height; top += side) {
        for (int left = 0; left < image.width; left += side) {
            double sum = 0.0;
            int count = 0;
            for (int y = top; y < std::min(image.height, top + side); ++y) {
                for (int x = left; x < std::min(image.width, left + side); ++x, ++count) {
                    const double luminance = image.values[3 * (std::size_t(y) * std::size_t(image.width) + std::size_t(x)) + 1];
                    if (luminance > 0.0 && std::isfinite(luminance)) sum += luminance;
                }
            }
            logs.push_back(std::log(std::max(sum / count, kDarkest)));
        }
    }
    return logs;
}

/// Cuts the counts at the ceiling until little is cut. False if the scene has less range than the display.
bool limitCounts(std::vector<double>& counts, double binWidth, double displayRange) {
    const double enough = kTolerance * std::accumulate(counts.begin(), counts.end(), 0.0);
    for (double cut = enough + 1.0; cut > enough;) {
        const double total = std::accumulate(counts.begin(), counts.end(), 0.0);
        if (total < enough) return false;
        const double ceiling = total * binWidth / displayRange;
        cut = 0.0;
        for (double& count : counts) {
            cut += std::max(0.0, count - ceiling);
            count = std::min(count, ceiling);
        }
    }
    return true;
}

void adjust(const Picture& picture, XyzImage& image, double white, double black) {
    const std::vector<double> logs = fovealLogs(image, fovealSide(picture));
    const auto [least, most] = std::minmax_element(logs.begin(), logs.end());
    const double range = std::log(white / black);
    const double width = (*most - *least) / kBins;
    const double first = *least;
    std::vector<double> counts(kBins);
    for (const double value : logs) {
        counts[std::size_t(width > 0.0 ? std::clamp(static_cast<int>((value - first) / width), 0, kBins - 1) : 0)] += 1.0;
    }
    if (*most - *least <= range || !limitCounts(counts, width, range)) {
        const double gain = std::exp(-*most);
        for (float& value : image.values) value = static_cast<float>(value * gain);
        return;
    }
    std::vector<double> below(kBins + 1);
    std::partial_sum(counts.begin(), counts.end(), below.begin() + 1);
    mapLuminance(image, [&](double luminance) {
        const double place = std::clamp((std::log(std::max(luminance, kDarkest)) - first) / width, 0.0, double(kBins));
        const auto bin = std::min(static_cast<std::size_t>(place), std::size_t(kBins - 1));
        const double share = (below[bin] + (place - double(bin)) * counts[bin]) / below.back();
        return (black * std::exp(range * share) - black) / (white - black);
    });
}

void filterHistogramAutoGain(const node::Node& node, Picture& picture) {
    if (picture.image.values.empty()) return;
    if (node.choice("method") == "adjustment") {
        const double white = node.real("display_luminance");
        adjust(picture, picture.image, white, std::min(node.real("display_black"), 0.999 * white));
    } else {
        gainByPercentile(picture.image, node.real("percentile"), node.real("target"));
    }
}

const bool kKnown = filterClasses().add("histogramautogain", filterHistogramAutoGain);

}  // namespace
}  // namespace nemra::core
