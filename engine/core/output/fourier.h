/// Fast Fourier transforms of pictures.
#pragma once

#include <complex>
#include <vector>

namespace nemra::core {

/// Two-dimensional transform in place, rows of `width`; both sizes are powers of two. The inverse divides by their product.
void fourierTransform(std::vector<std::complex<float>>& values, int width, int height, bool inverse);

}  // namespace nemra::core
