/// ICC profiles of pictures.
#pragma once

#include <span>
#include <vector>

#include "engine/core/output/picture.h"

namespace nemra::core {

/// What a profile is to say: from a code c to the light black + (1 - black) curve(c), relative to white's.
struct DisplayCurve {
    double gamma = 0.0;                ///< above 0: the exponent of a power law; 0: the colour space's own curve
    double black = 0.0;                ///< light of code 0
    std::span<const double> lights{};  ///< if there are any: light of evenly spaced codes, in place of the other two
};

/// The profile of pictures in that colour space with that display curve. ICC.1:2010 (version 4); the same bytes each time.
/// Colours come back to 2^-16 of white, as the profile's numbers have it, and what the steps of codes take. Throws
/// std::runtime_error.
std::vector<char> iccProfile(const ColorSpace& space, const DisplayCurve& curve);

/// That of a picture's codes; empty where none describes them.
std::vector<char> profileOf(const DisplayImage& image);

}  // namespace nemra::core
