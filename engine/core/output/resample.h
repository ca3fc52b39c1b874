/// Pictures of another size.
#pragma once

#include <string_view>
#include <vector>

namespace nemra::core {

/// Weights of the old pixels [first, first + weights.size()) in a new one; they sum to 1.
struct Taps {
    int first = 0;
    std::vector<double> weights;
};

/// For each of the `to` new pixels of a line of `from` old ones. Kernels by name: box (mean over the area of the new pixel),
/// bilinear (triangle of two old pixels), mitchell (cubic with B = C = 1/3: Mitchell and Netravali, "Reconstruction Filters in
/// Computer Graphics", SIGGRAPH 1988), lanczos (sinc times sinc over three pixels: Duchon, "Lanczos Filtering in One and Two
/// Dimensions", J. Applied Meteorology 18, 1979). A smaller picture widens the kernel to the new pixels. At the edges the weights
/// inside are scaled up.
std::vector<Taps> resampling(int from, int to, std::string_view kernel);

/// Rows from the top, `components` numbers per pixel.
std::vector<float> resample(const std::vector<float>& values, int width, int height, int components, int newWidth, int newHeight,
                            std::string_view kernel);

}  // namespace nemra::core
