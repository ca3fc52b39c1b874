/// Convolutions of pictures: rows from the top, `components` numbers per pixel.
#pragma once

#include <vector>

namespace nemra::core {

/// Weights 0 .. n of a symmetric kernel: the integral of a Gaussian of that standard deviation over each pixel, cut at four
/// standard deviations and at `largest` pixels, and scaled so that all of them (the outer ones twice) sum to 1. Just {1} for a
/// sigma of 0.
std::vector<double> gaussianKernel(double sigma, int largest);

/// Rows, then columns, with a symmetric kernel. At the edges the weights inside the picture are scaled up to 1.
void convolve(float* values, int width, int height, int components, const std::vector<double>& kernel);

/// How a Gaussian blur is done: by its kernel, or where that is empty by box averages of these radii, one after the other.
struct BlurPlan {
    std::vector<double> kernel;
    std::vector<int> radii;
};

/// For a sigma above 0 and a picture of that larger side. A draft takes three box averages instead (Wells, "Efficient Synthesis
/// of Gaussian Filters by Cascaded Uniform Filters", IEEE PAMI 8(2), 1986), as does a sigma above 24 pixels with four of them;
/// their shape is within some per cent of the Gaussian's peak.
BlurPlan planBlur(double sigma, int largest, bool fast);

/// Blurs by that plan. Does nothing for a sigma of 0; takes numbers that aren't finite for 0.
void blur(float* values, int width, int height, int components, double sigma, bool fast);

}  // namespace nemra::core
