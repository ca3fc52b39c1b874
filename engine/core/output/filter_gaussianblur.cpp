// Convolution with the Gaussian exp(-r^2 / (2 sigma^2)) / (2 pi sigma^2), integrated over the pixels.
#include "engine/core/output/convolve.h"
#include "engine/core/output/picture.h"

namespace nemra::core {
namespace {

void filterGaussianBlur(const node::Node& node, Picture& picture) {
    const double sigma = node.real("sigma");
    XyzImage& image = picture.image;
    blur(image.values.data(), image.width, image.height, 3, sigma, picture.fast);
    for (Plane& plane : picture.planes) blur(plane.values.data(), image.width, image.height, 1, sigma, picture.fast);
}

const bool kKnown = filterClasses().add("gaussianblur", filterGaussianBlur);

}  // namespace
}  // namespace nemra::core
