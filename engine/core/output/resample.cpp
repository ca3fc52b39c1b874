#include "engine/core/output/resample.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "engine/core/output/parallel_rows.h"

namespace nemra::core {

namespace {

double sinc(double x) { return x == 0.0 ? 1.0 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x); }

double mitchell(double x) {
    constexpr double b = 1.0 / 3.0;
    constexpr double c = 1.0 / 3.0;
    if (x < 1.0) return ((12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + (6 - 2 * b)) / 6.0;
    if (x < 2.0) return ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x + (8 * b + 24 * c)) / 6.0;
    return 0.0;
}

struct Kernel {
    double reach;
    double (*weight)(double distance);
};

Kernel kernelNamed(std::string_view name) {
    if (name == "mitchell") return {2.0, mitchell};
    if (name == "lanczos") return {3.0, [](double x) { return x < 3.0 ? sinc(x) * sinc(x / 3.0) : 0.0; }};
    return {1.0, [](double x) { return std::max(0.0, 1.0 - x); }};
}

/// Share of each old pixel that the new one covers.
Taps areaTaps(double from, double to, int count) {
    Taps taps{static_cast<int>(std::floor(from)), {}};
    for (int i = taps.first; i < count && i < to; ++i) {
        taps.weights.push_back(std::max(0.0, std::min(to, i + 1.0) - std::max(from, double(i))));
    }
    return taps;
}

void normalise(Taps& taps) {
    double sum = 0.0;
    for (const double weight : taps.weights) sum += weight;
    for (double& weight : taps.weights) weight /= sum;
}

}  // namespace

std::vector<Taps> resampling(int from, int to, std::string_view name) {
    const double step = double(from) / to;
    const Kernel kernel = kernelNamed(name);
    const double stretch = std::max(1.0, step);
    std::vector<Taps> all;
    for (int i = 0; i < to; ++i) {
        Taps taps;
        if (name == "box") {
            taps = areaTaps(i * step, (i + 1) * step, from);
        } else {
            const double middle = (i + 0.5) * step - 0.5;
            taps.first = std::max(0, static_cast<int>(std::ceil(middle - kernel.reach * stretch)));
            const int last = std::min(from - 1, static_cast<int>(std::floor(middle + kernel.reach * stretch)));
            for (int j = taps.first; j <= last; ++j) taps.weights.push_back(kernel.weight(std::abs(j - middle) / stretch));
        }
        normalise(taps);
        all.push_back(std::move(taps));
    }
    return all;
}

std::vector<float> resample(const std::vector<float>& values, int width, int height, int components, int newWidth, int newHeight,
                            std::string_view kernel) {
    const auto n = static_cast<std::size_t>(components);
    const std::vector<Taps> across = resampling(width, newWidth, kernel);
    const std::vector<Taps> down = resampling(height, newHeight, kernel);
    std::vector<float> wide(std::size_t(newWidth) * std::size_t(height) * n);
    parallelRows(height, [&](int y) {
        for (int x = 0; x < newWidth; ++x) {
            const Taps& taps = across[std::size_t(x)];
            for (std::size_t c = 0; c < n; ++c) {
                double sum = 0.0;
                for (std::size_t t = 0; t < taps.weights.size(); ++t) {
                    const std::size_t pixel = std::size_t(y) * std::size_t(width) + std::size_t(taps.first) + t;
                    const float value = values[pixel * n + c];
                    if (std::isfinite(value)) sum += taps.weights[t] * double(value);  // others count as black
                }
                wide[(std::size_t(y) * std::size_t(newWidth) + std::size_t(x)) * n + c] = static_cast<float>(sum);
            }
        }
    });
    std::vector<float> result(std::size_t(newWidth) * std::size_t(newHeight) * n);
    const std::size_t row = std::size_t(newWidth) * n;
    parallelRows(newHeight, [&](int y) {
        const Taps& taps = down[std::size_t(y)];
        for (std::size_t i = 0; i < row; ++i) {
            double sum = 0.0;
            for (std::size_t t = 0; t < taps.weights.size(); ++t) {
                sum += taps.weights[t] * wide[(std::size_t(taps.first) + t) * row + i];
            }
            result[std::size_t(y) * row + i] = static_cast<float>(sum);
        }
    });
    return result;
}

}  // namespace nemra::core
