/// Pictures that filters lay over or mix with a result.
#pragma once

#include <optional>
#include <vector>

#include "engine/core/output/picture.h"

namespace nemra::core {

struct ReadPicture {
    XyzImage image;            ///< Y = 1, times the node's scale, for white
    std::vector<float> alpha;  ///< per pixel, rows from the top, 0 to 1; empty: opaque
};

/// The picture of a node of the family image, with its opacity if `withAlpha` and it has one. None after one message that
/// names the node.
std::optional<ReadPicture> readPicture(const node::Node& image, bool withAlpha);

}  // namespace nemra::core
