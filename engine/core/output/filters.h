/// The classes of the family "filter", each in a file of its own.
#pragma once

#include "engine/core/output/picture.h"

namespace nemra::core {

/// Tristimulus values by the node's observer, from the sensor's channels; replaces what earlier filters made.
void filterSpecToXyz(const node::Node& node, Picture& picture);

/// Times `gain`, 1/(cd/m2): luminance 1/gain becomes the display's white.
void filterGain(const node::Node& node, Picture& picture);

/// The gain that brings the mean display luminance to `target`, where a pixel counts with at most the display's white: a small
/// bright lamp in view doesn't darken the room.
void filterAverageAutoGain(const node::Node& node, Picture& picture);

/// That gain by itself. 1 for an image without light.
double averageAutoGain(const XyzImage& image, double target);

}  // namespace nemra::core
