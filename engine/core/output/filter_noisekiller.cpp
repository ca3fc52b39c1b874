// Non-local means guided by the variance of the pixels: Rousselle, Knaus, Zwicker, "Adaptive Rendering with Non-Local Means
// Filtering", ACM Transactions on Graphics 31(6), 2012, equations 2 to 6. With u the pixels' values, v the variances of these
// means, patches P of (2 f + 1)^2 pixels about p and q, and three channels:
//   d2(p, q) = mean over patch and channels of ((u_p - u_q)^2 - (v_p + min(v_p, v_q))) / (e + k^2 (v_p + v_q))
//   weight = exp(-max(0, d2))
// The result's own variance is that of the luminance of single samples; X and Z are taken to vary by the same share.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "engine/common/log.h"
#include "engine/core/output/parallel_rows.h"
#include "engine/core/output/picture.h"

namespace nemra::core {
namespace {

constexpr float kEpsilon = 1.0e-10F;

struct Guide {
    int width, height;
    std::vector<std::array<float, 3>> value;
    std::vector<std::array<float, 3>> variance;

    std::size_t at(int x, int y) const { return std::size_t(y) * std::size_t(width) + std::size_t(x); }
};

/// Variance of a pixel's mean over the mean squared, which gains and tone curves leave about as it is.
std::vector<float> relativeVariances(const Film& film, const LightView& view) {
    const std::size_t channels = film.channels.size();
    const int reference = referenceChannel(film);
    std::vector<float> relative(std::size_t(view.width) * std::size_t(view.height));
    const auto& variance = view.meta[std::size_t(MetaChannel::variance)];
    const auto& samples = view.meta[std::size_t(MetaChannel::spp)];
    for (int x = 0; x < view.width; ++x) {
        for (int y = 0; y < view.height; ++y) {
            const std::size_t pixel = film.pixel(x, y);
            const double* const values = view.values.data() + pixel * channels;
            double mean = 0.0;
            if (reference >= 0) {
                mean = values[reference];
            } else {
                for (std::size_t c = 0; c < channels; ++c) mean += values[c] / double(channels);
            }
            if (mean == 0.0 || !(samples[pixel] > 0.0)) continue;
            relative[std::size_t(y) * std::size_t(view.width) + std::size_t(x)] =
                static_cast<float>(variance[pixel] / samples[pixel] / (mean * mean));
        }
    }
    return relative;
}

/// Cuts pixels to `factor` times the luminance of the third brightest of their eight neighbours: the corner of a lamp has three
/// that are as bright.
void limitOutliers(XyzImage& image, double factor) {
    const XyzImage original = image;
    const auto luminance = [&](int x, int y) {
        return original.values[3 * (std::size_t(y) * std::size_t(image.width) + std::size_t(x)) + 1];
    };
    parallelRows(image.height, [&](int y) {
        for (int x = 0; x < image.width; ++x) {
            std::array<float, 8> around{};
            std::size_t count = 0;
            for (int v = std::max(0, y - 1); v <= std::min(image.height - 1, y + 1); ++v) {
                for (int u = std::max(0, x - 1); u <= std::min(image.width - 1, x + 1); ++u) {
                    if (u != x || v != y) around[count++] = luminance(u, v);
                }
            }
            if (count < 3) continue;
            std::nth_element(around.begin(), around.begin() + 2, around.begin() + count, std::greater<>());
            const double limit = factor * around[2];
            const double here = luminance(x, y);
            if (!(here > limit) || !(limit > 0.0)) continue;
            float* const xyz = image.values.data() + 3 * (std::size_t(y) * std::size_t(image.width) + std::size_t(x));
            for (int c = 0; c < 3; ++c) xyz[c] = static_cast<float>(xyz[c] * limit / here);
        }
    });
}

Guide makeGuide(const XyzImage& image, const std::vector<float>& relative) {
    Guide guide{image.width, image.height, {}, {}};
    guide.value.resize(relative.size());
    guide.variance.resize(relative.size());
    for (std::size_t i = 0; i < relative.size(); ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
            const float value = image.values[3 * i + c];
            guide.value[i][c] = value;
            guide.variance[i][c] = relative[i] * value * value;
        }
    }
    return guide;
}

/// Distance of single pixels, mean over the channels.
float distance(const Guide& guide, std::size_t p, std::size_t q, float k2) {
    float sum = 0.0F;
    for (std::size_t c = 0; c < 3; ++c) {
        const float difference = guide.value[p][c] - guide.value[q][c];
        const float vp = guide.variance[p][c];
        const float vq = guide.variance[q][c];
        sum += (difference * difference - (vp + std::min(vp, vq))) / (kEpsilon + k2 * (vp + vq));
    }
    return sum / 3.0F;
}

/// One row of the result: weights are summed over the window, patches column by column.
void filterRow(const Guide& guide, int y, int search, int patch, float k2, float* out) {
    const int width = guide.width;
    std::vector<float> column(static_cast<std::size_t>(width));  // sums over the patch's rows of the distance at each x
    std::vector<float> weights(std::size_t(width), 0.0F);
    std::fill_n(out, 3 * width, 0.0F);
    for (int dy = std::max(-search, -y); dy <= std::min(search, guide.height - 1 - y); ++dy) {
        const int top = std::max({-patch, -y, -(y + dy)});
        const int bottom = std::min({patch, guide.height - 1 - y, guide.height - 1 - y - dy});
        for (int dx = -search; dx <= search; ++dx) {
            const int first = std::max(0, -dx);
            const int last = std::min(width, width - dx);
            if (first >= last) continue;
            for (int x = first; x < last; ++x) {
                float sum = 0.0F;
                for (int r = top; r <= bottom; ++r) sum += distance(guide, guide.at(x, y + r), guide.at(x + dx, y + dy + r), k2);
                column[std::size_t(x)] = sum;
            }
            double running = 0.0;
            for (int x = first; x < std::min(last, first + patch); ++x) running += column[std::size_t(x)];
            for (int x = first; x < last; ++x) {
                if (x + patch < last) running += column[std::size_t(x + patch)];
                if (x - patch - 1 >= first) running -= column[std::size_t(x - patch - 1)];
                const int columns = std::min(last - 1, x + patch) - std::max(first, x - patch) + 1;
                const double mean = running / (double(columns) * (bottom - top + 1));
                const float weight = std::exp(-static_cast<float>(std::max(0.0, mean)));
                const auto& value = guide.value[guide.at(x + dx, y + dy)];
                for (std::size_t c = 0; c < 3; ++c) out[3 * std::size_t(x) + c] += weight * value[c];
                weights[std::size_t(x)] += weight;
            }
        }
    }
    for (int x = 0; x < width; ++x) {
        for (std::size_t c = 0; c < 3; ++c) out[3 * std::size_t(x) + c] /= weights[std::size_t(x)];
    }
}

void filterNoiseKiller(const node::Node& node, Picture& picture) {
    XyzImage& image = picture.image;
    if (image.width != picture.view.width || image.height != picture.view.height || picture.view.metaChannels == 0) {
        return log::warning(node.label(), "variances don't fit a picture of another size; the filter is left out");
    }
    for (float& value : image.values) {
        if (!std::isfinite(value)) value = 0.0F;
    }
    if (node.choice("outliers") == "limit") limitOutliers(image, node.real("outlier_factor"));
    const auto k = static_cast<float>(node.real("strength"));
    int search = node.integer("search_radius");
    int patch = node.integer("patch_radius");
    if (picture.fast) {
        search = std::min(search, 3);
        patch = std::min(patch, 1);
    }
    const Guide guide = makeGuide(image, relativeVariances(picture.film, picture.view));
    parallelRows(image.height, [&](int y) {
        float* const out = image.values.data() + 3 * std::size_t(y) * std::size_t(image.width);
        filterRow(guide, y, search, patch, k * k, out);
    });
}

const bool kKnown = filterClasses().add("noisekiller", filterNoiseKiller);

}  // namespace
}  // namespace nemra::core
