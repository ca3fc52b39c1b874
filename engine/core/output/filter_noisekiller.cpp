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
#include <new>

#include "engine/common/log.h"
#include "engine/core/opencl/attempt.h"
#include "engine/core/output/filters_opencl.h"
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
    // Beyond this a patch has no weight anyway, and running sums would lose all digits.
    constexpr float kMost = 1.0e4F;
    return std::clamp(sum / 3.0F, -kMost, kMost);
}

/// Rows [y0, y1) of the result. For each offset of the window the distances of single pixels are summed over the patches by
/// running sums, first along the rows, then down the columns.
void filterBand(const Guide& guide, int y0, int y1, const DenoiseWindow& window, float* out) {
    const int width = guide.width;
    const int height = guide.height;
    const auto row = static_cast<std::size_t>(width);
    std::vector<float> across(row * static_cast<std::size_t>(y1 - y0 + 2 * window.patch));
    std::vector<float> single(row);
    std::vector<double> column(row);
    std::vector<float> weights(row * static_cast<std::size_t>(y1 - y0), 0.0F);
    std::fill_n(out, 3 * weights.size(), 0.0F);
    for (int dy = -window.search; dy <= window.search; ++dy) {
        const int top = std::max({y0 - window.patch, 0, -dy});
        const int bottom = std::min({y1 + window.patch, height, height - dy});
        if (top >= bottom) continue;
        for (int dx = -window.search; dx <= window.search; ++dx) {
            const int first = std::max(0, -dx);
            const int last = std::min(width, width - dx);
            if (first >= last) continue;
            for (int y = top; y < bottom; ++y) {
                for (int x = first; x < last; ++x) {
                    single[std::size_t(x)] = distance(guide, guide.at(x, y), guide.at(x + dx, y + dy), window.k2);
                }
                float* const sums = across.data() + row * std::size_t(y - top);
                double running = 0.0;
                for (int x = first; x < std::min(last, first + window.patch); ++x) running += single[std::size_t(x)];
                for (int x = first; x < last; ++x) {
                    if (x + window.patch < last) running += single[std::size_t(x + window.patch)];
                    if (x - window.patch - 1 >= first) running -= single[std::size_t(x - window.patch - 1)];
                    sums[x] = static_cast<float>(running);
                }
            }
            std::fill(column.begin(), column.end(), 0.0);
            const auto take = [&](int y, double sign) {
                const float* const sums = across.data() + row * std::size_t(y - top);
                for (int x = first; x < last; ++x) column[std::size_t(x)] += sign * sums[x];
            };
            int from = top;  // the rows [from, to) are in the columns' sums
            int to = top;
            for (int y = std::max(y0, -dy); y < std::min(y1, height - dy); ++y) {
                while (to < std::min(bottom, y + window.patch + 1)) take(to++, 1.0);
                while (from < y - window.patch) take(from++, -1.0);
                float* const sum = out + 3 * row * std::size_t(y - y0);
                float* const weight = weights.data() + row * std::size_t(y - y0);
                for (int x = first; x < last; ++x) {
                    const int columns = std::min(last - 1, x + window.patch) - std::max(first, x - window.patch) + 1;
                    const double mean = column[std::size_t(x)] / (double(columns) * (to - from));
                    const float share = std::exp(-static_cast<float>(std::max(0.0, mean)));
                    const auto& value = guide.value[guide.at(x + dx, y + dy)];
                    for (std::size_t c = 0; c < 3; ++c) sum[3 * std::size_t(x) + c] += share * value[c];
                    weight[x] += share;
                }
            }
        }
    }
    for (std::size_t i = 0; i < weights.size(); ++i) {
        for (std::size_t c = 0; c < 3; ++c) out[3 * i + c] /= weights[i];
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
    DenoiseWindow window{node.integer("search_radius"), node.integer("patch_radius"), k * k};
    if (picture.fast) {
        window.search = std::min(window.search, 3);
        window.patch = std::min(window.patch, 1);
    }
    const std::vector<float> relative = relativeVariances(picture.film, picture.view);
    opencl::Attempt attempt(node.label());
    if (attempt([&](opencl::Device& device) { image.values = denoiseByOpenCl(device, image, relative, window); })) return;
    const Guide guide = makeGuide(image, relative);
    constexpr int kBand = 32;
    std::atomic<bool> failed{false};
    parallelRows((image.height + kBand - 1) / kBand,
                 [&](int band) {
                     const int y0 = band * kBand;
                     float* const out = image.values.data() + 3 * std::size_t(y0) * std::size_t(image.width);
                     try {
                         filterBand(guide, y0, std::min(image.height, y0 + kBand), window, out);
                     } catch (const std::bad_alloc&) {
                         failed = true;
                     }
                 },
                 1);
    if (failed) throw std::bad_alloc();
}

const bool kKnown = filterClasses().add("noisekiller", filterNoiseKiller);

}  // namespace
}  // namespace nemra::core
