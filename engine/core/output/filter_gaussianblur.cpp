// Convolution with the Gaussian exp(-r^2 / (2 sigma^2)) / (2 pi sigma^2), integrated over the pixels.
#include <algorithm>

#include "engine/core/opencl/attempt.h"
#include "engine/core/output/convolve.h"
#include "engine/core/output/filters_opencl.h"
#include "engine/core/output/picture.h"

namespace nemra::core {
namespace {

void filterGaussianBlur(const node::Node& node, Picture& picture) {
    const double sigma = node.real("sigma");
    if (!(sigma > 0.0)) return;
    const int width = picture.image.width;
    const int height = picture.image.height;
    const BlurPlan plan = planBlur(sigma, std::max(width, height), picture.fast);
    opencl::Attempt attempt(node.label());
    const auto blurValues = [&](std::vector<float>& values, int components) {
        const auto byOpenCl = [&](opencl::Device& device) {
            values = blurByOpenCl(device, values, width, height, components, plan);
        };
        if (!attempt(byOpenCl)) blur(values.data(), width, height, components, sigma, picture.fast);
    };
    blurValues(picture.image.values, 3);
    for (Plane& plane : picture.planes) blurValues(plane.values, 1);
}

const bool kKnown = filterClasses().add("gaussianblur", filterGaussianBlur);

}  // namespace
}  // namespace nemra::core
