/// Fast Fourier transforms of pictures.
#pragma once

#include <complex>
#include <vector>

namespace nemra::core {

/// The least size, a power of two, that holds so many numbers.
int transformSize(int least);

/// The first half of the roots of unity of that order, those of the inverse turn the other way.
std::vector<std::complex<float>> rootsOfUnity(int order, bool inverse);

/// Two-dimensional transform in place, rows of `width`; both sizes are powers of two. The inverse divides by their product.
void fourierTransform(std::vector<std::complex<float>>& values, int width, int height, bool inverse);

}  // namespace nemra::core
