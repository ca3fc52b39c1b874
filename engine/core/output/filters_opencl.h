/// The filters that also run through OpenCL. All of these compute in single precision, leave what they are given as it is, and
/// throw opencl::Failure. The order of rows is that of pictures.
#pragma once

#include <vector>

#include "engine/core/opencl/device.h"
#include "engine/core/output/convolve.h"
#include "engine/core/output/picture.h"

namespace nemra::core {

/// blur(), with numbers that aren't finite taken for 0.
std::vector<float> blurByOpenCl(opencl::Device& device, const std::vector<float>& values, int width, int height, int components,
                                const BlurPlan& plan);

/// Radii of what noisekiller looks at, and its strength squared.
struct DenoiseWindow {
    int search;
    int patch;
    float k2;
};

/// Variances are those of a pixel's mean over its square.
std::vector<float> denoiseByOpenCl(opencl::Device& device, const XyzImage& image, const std::vector<float>& relativeVariances,
                                   const DenoiseWindow& window);

/// Three numbers per pixel: what it gets from all others, where shares[dy * width + dx] is the share of the light that goes from
/// one pixel to another dx columns and dy rows away.
std::vector<float> scatterByOpenCl(opencl::Device& device, const XyzImage& image, const std::vector<float>& shares);

/// For each list of weights, one per channel, the sum of weight times value of each pixel.
std::vector<std::vector<float>> weighedSumsByOpenCl(opencl::Device& device, const Film& film, const LightView& view,
                                                    const std::vector<std::vector<double>>& weights);

}  // namespace nemra::core
