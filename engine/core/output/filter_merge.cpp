// Two pictures of the same size combined pixel by pixel, in X, Y and Z alike.
#include <algorithm>
#include <cmath>

#include "engine/common/log.h"
#include "engine/core/output/read_picture.h"

namespace nemra::core {
namespace {

void filterMerge(const node::Node& node, Picture& picture) {
    const auto other = readPicture(*node.child("image"), false);
    if (!other) return;  // it has said why
    XyzImage& image = picture.image;
    if (other->image.width != image.width || other->image.height != image.height) {
        return log::warning(node.label(), "the other picture has " + std::to_string(other->image.width) + " x " +
                                              std::to_string(other->image.height) + " pixels, not " +
                                              std::to_string(image.width) + " x " + std::to_string(image.height) +
                                              "; the filter is left out");
    }
    const std::string& operation = node.choice("operation");
    const double weight = operation == "blend" ? node.real("weight") : operation == "add" ? node.real("factor") : 0.0;
    for (std::size_t i = 0; i < image.values.size(); i += 3) {
        float* const a = image.values.data() + i;
        const float* const b = other->image.values.data() + i;
        const bool brighter = b[1] > a[1];
        for (int c = 0; c < 3; ++c) {
            if (operation == "blend") a[c] = static_cast<float>((1.0 - weight) * a[c] + weight * b[c]);
            if (operation == "add") a[c] = static_cast<float>(a[c] + weight * b[c]);
            if (operation == "multiply") a[c] *= b[c];
            if (operation == "difference") a[c] = std::abs(a[c] - b[c]);
            if (operation == "maximum" && brighter) a[c] = b[c];
        }
    }
}

const bool kKnown = filterClasses().add("merge", filterMerge);

}  // namespace
}  // namespace nemra::core
