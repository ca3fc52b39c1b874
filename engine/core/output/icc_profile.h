/// ICC profiles of pictures.
#pragma once

#include <vector>

#include "engine/core/output/picture.h"

namespace nemra::core {

/// The profile of pictures in that colour space with that display curve: `gamma` > 0 is the exponent of a power law, 0 stands for
/// the space's own curve. ICC.1:2010 (version 4); the same bytes each time. Throws std::runtime_error.
std::vector<char> iccProfile(const ColorSpace& space, double gamma);

/// That of a picture's codes; empty where none describes them.
std::vector<char> profileOf(const DisplayImage& image);

}  // namespace nemra::core
