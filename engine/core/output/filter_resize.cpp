// Picture of another size; see resample.h for the kernels and their sources.
#include <algorithm>
#include <cmath>

#include "engine/common/log.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/resample.h"
#include "engine/core/render.h"

namespace nemra::core {
namespace {

void filterResize(const node::Node& node, Picture& picture) {
    XyzImage& image = picture.image;
    if (image.values.empty()) return;
    int width = 0;
    int height = 0;
    if (node.choice("size") == "pixels") {
        width = node.integer("width");
        height = node.integer("height");
    } else {
        const double factor = node.real("factor");
        width = std::max(1, static_cast<int>(std::lround(std::min(1.0e9, image.width * factor))));
        height = std::max(1, static_cast<int>(std::lround(std::min(1.0e9, image.height * factor))));
    }
    if (std::uint64_t(width) * std::uint64_t(height) * 3 * sizeof(float) > kMaxBufferBytes) {
        return log::warning(node.label(), "the picture would become too large; the filter is left out");
    }
    const std::string kernel = picture.fast ? "box" : node.choice("kernel");
    for (Plane& plane : picture.planes) {
        plane.values = resample(plane.values, image.width, image.height, 1, width, height, kernel);
    }
    image.values = resample(image.values, image.width, image.height, 3, width, height, kernel);
    image.width = width;
    image.height = height;
}

const bool kKnown = filterClasses().add("resize", filterResize);

}  // namespace
}  // namespace nemra::core
