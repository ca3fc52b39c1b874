/// Pictures that filters lay over or mix with a result.
#pragma once

#include <optional>
#include <vector>

#include "engine/core/output/picture.h"

namespace nemra::core {

struct ReadPicture {
    XyzImage image;            ///< Y = 1 for white (179 in Radiance pictures, whiteLuminance in OpenEXR), times the node's scale
    std::vector<float> alpha;  ///< per pixel, 0 to 1; empty: opaque
};

/// The picture of a node of the family image: numbers in the node, or a PNG, JPEG, OpenEXR or Radiance file. None after one
/// warning that names the node.
std::optional<ReadPicture> readPicture(const node::Node& image);

}  // namespace nemra::core
