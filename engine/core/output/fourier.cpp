#include "engine/core/output/fourier.h"

#include <cmath>
#include <numbers>

#include "engine/core/output/parallel_rows.h"

namespace nemra::core {

namespace {

using Complex = std::complex<float>;

Complex times(Complex a, Complex b) {  // without the library's care for infinities
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

/// Cooley and Tukey (1965), radix 2, in place.
void transformLine(Complex* line, std::size_t count, const std::vector<Complex>& roots) {
    for (std::size_t i = 1, j = 0; i < count; ++i) {
        std::size_t bit = count >> 1;
        for (; j & bit; bit >>= 1) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(line[i], line[j]);
    }
    for (std::size_t length = 2; length <= count; length *= 2) {
        const std::size_t step = count / length;
        for (std::size_t start = 0; start < count; start += length) {
            for (std::size_t i = 0; i < length / 2; ++i) {
                const Complex even = line[start + i];
                const Complex odd = times(line[start + i + length / 2], roots[i * step]);
                line[start + i] = even + odd;
                line[start + i + length / 2] = even - odd;
            }
        }
    }
}

}  // namespace

int transformSize(int least) {
    int power = 1;
    while (power < least) power *= 2;
    return power;
}

std::vector<Complex> rootsOfUnity(int order, bool inverse) {
    std::vector<Complex> roots(static_cast<std::size_t>(order) / 2);
    for (std::size_t i = 0; i < roots.size(); ++i) {
        const double angle = (inverse ? 2.0 : -2.0) * std::numbers::pi * double(i) / order;
        roots[i] = Complex(static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)));
    }
    return roots;
}

void fourierTransform(std::vector<Complex>& values, int width, int height, bool inverse) {
    const auto w = static_cast<std::size_t>(width);
    const auto h = static_cast<std::size_t>(height);
    const std::vector<Complex> rowRoots = rootsOfUnity(width, inverse);
    const std::vector<Complex> columnRoots = rootsOfUnity(height, inverse);
    parallelRows(height, [&](int y) { transformLine(values.data() + w * std::size_t(y), w, rowRoots); });
    parallelRows(width, [&](int x) {
        thread_local std::vector<Complex> column;
        column.resize(h);
        for (std::size_t y = 0; y < h; ++y) column[y] = values[y * w + std::size_t(x)];
        transformLine(column.data(), h, columnRoots);
        for (std::size_t y = 0; y < h; ++y) values[y * w + std::size_t(x)] = column[y];
    });
    if (!inverse) return;
    const float scale = 1.0F / (static_cast<float>(width) * static_cast<float>(height));
    for (Complex& value : values) value *= scale;
}

}  // namespace nemra::core
