#include "engine/core/output/convolve.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "engine/core/output/parallel_rows.h"

namespace nemra::core {

namespace {

/// A row or a column: `count` pixels, `stride` numbers apart.
struct Line {
    float* first;
    int count;
    std::size_t stride;
};

template <class Work>
void forEachLine(float* values, int width, int height, int components, Work&& work) {
    const auto row = static_cast<std::size_t>(width) * static_cast<std::size_t>(components);
    const auto pixel = static_cast<std::size_t>(components);
    parallelRows(height, [&](int y) {
        for (int c = 0; c < components; ++c) work(Line{values + row * std::size_t(y) + std::size_t(c), width, pixel});
    });
    parallelRows(width, [&](int x) {
        for (int c = 0; c < components; ++c) work(Line{values + pixel * std::size_t(x) + std::size_t(c), height, row});
    });
}

void convolveLine(const Line& line, const std::vector<double>& kernel, std::vector<float>& copy) {
    const int reach = static_cast<int>(kernel.size()) - 1;
    copy.resize(static_cast<std::size_t>(line.count));
    for (int i = 0; i < line.count; ++i) copy[std::size_t(i)] = line.first[line.stride * std::size_t(i)];
    for (int i = 0; i < line.count; ++i) {
        double sum = 0.0;
        double weights = 0.0;
        for (int j = std::max(0, i - reach); j <= std::min(line.count - 1, i + reach); ++j) {
            const double weight = kernel[std::size_t(std::abs(i - j))];
            sum += weight * copy[std::size_t(j)];
            weights += weight;
        }
        line.first[line.stride * std::size_t(i)] = static_cast<float>(sum / weights);
    }
}

/// Mean over 2 radius + 1 pixels, of those that the line has.
void boxLine(const Line& line, int radius, std::vector<double>& sums) {
    sums.resize(static_cast<std::size_t>(line.count) + 1);
    sums[0] = 0.0;
    for (int i = 0; i < line.count; ++i) {
        sums[std::size_t(i) + 1] = sums[std::size_t(i)] + double(line.first[line.stride * std::size_t(i)]);
    }
    for (int i = 0; i < line.count; ++i) {
        const int from = std::max(0, i - radius);
        const int to = std::min(line.count, i + radius + 1);
        line.first[line.stride * std::size_t(i)] =
            static_cast<float>((sums[std::size_t(to)] - sums[std::size_t(from)]) / (to - from));
    }
}

/// Radii of `passes` boxes whose variances, ((2 r + 1)^2 - 1) / 12 each, sum to sigma^2 as nearly as whole pixels allow.
std::vector<int> boxRadii(double sigma, int passes) {
    const double ideal = 0.5 * (std::sqrt(12.0 * sigma * sigma / passes + 1.0) - 1.0);
    const int small = static_cast<int>(std::floor(ideal));
    const auto variance = [](int r) { return (std::pow(2.0 * r + 1.0, 2) - 1.0) / 12.0; };
    int wide = 0;
    double best = 1.0e300;
    for (int n = 0; n <= passes; ++n) {
        const double off = std::abs(n * variance(small + 1) + (passes - n) * variance(small) - sigma * sigma);
        if (off < best) {
            best = off;
            wide = n;
        }
    }
    std::vector<int> radii(std::size_t(passes), small);
    std::fill_n(radii.begin(), wide, small + 1);
    return radii;
}

}  // namespace

std::vector<double> gaussianKernel(double sigma, int largest) {
    if (!(sigma > 0.0)) return {1.0};
    const int reach = std::min(largest, static_cast<int>(std::ceil(4.0 * sigma)));
    std::vector<double> kernel(static_cast<std::size_t>(std::max(0, reach)) + 1);
    const auto below = [&](double x) { return 0.5 * std::erf(x / (sigma * std::sqrt(2.0))); };
    double sum = 0.0;
    for (std::size_t i = 0; i < kernel.size(); ++i) {
        kernel[i] = below(double(i) + 0.5) - below(double(i) - 0.5);
        sum += i == 0 ? kernel[i] : 2.0 * kernel[i];
    }
    for (double& weight : kernel) weight /= sum;
    return kernel;
}

void convolve(float* values, int width, int height, int components, const std::vector<double>& kernel) {
    if (kernel.size() < 2) return;
    forEachLine(values, width, height, components, [&](const Line& line) {
        thread_local std::vector<float> copy;
        convolveLine(line, kernel, copy);
    });
}

BlurPlan planBlur(double sigma, int largest, bool fast) {
    constexpr double kLargestExact = 24.0;
    const bool draft = fast && sigma >= 1.0;
    if (!draft && sigma <= kLargestExact) return {gaussianKernel(sigma, largest), {}};
    return {{}, boxRadii(sigma, sigma > kLargestExact ? 4 : 3)};
}

void blur(float* values, int width, int height, int components, double sigma, bool fast) {
    if (!(sigma > 0.0)) return;
    const std::size_t count = std::size_t(width) * std::size_t(height) * std::size_t(components);
    for (std::size_t i = 0; i < count; ++i) {
        if (!std::isfinite(values[i])) values[i] = 0.0F;  // one such number would spoil its surroundings
    }
    const BlurPlan plan = planBlur(sigma, std::max(width, height), fast);
    convolve(values, width, height, components, plan.kernel);
    for (const int radius : plan.radii) {
        forEachLine(values, width, height, components, [&](const Line& line) {
            thread_local std::vector<double> sums;
            boxLine(line, radius, sums);
        });
    }
}

}  // namespace nemra::core
