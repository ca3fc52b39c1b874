/// Which bright pixels belong together.
#pragma once

#include "engine/core/glare/visual_field.h"

namespace nemra::core {

struct JoinedPixels {
    std::vector<int> group;  ///< per pixel, from 0 in the order of their first pixels; -1 for pixels that aren't marked
    int count = 0;
};

/// Two marked pixels are in one group if a chain of marked pixels leads from one to the other, each the next one's neighbour (of
/// eight) or within `angle`, radians, of it.
JoinedPixels joinPixels(const VisualField& field, const std::vector<char>& marked, double angle);

}  // namespace nemra::core
