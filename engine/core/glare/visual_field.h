/// A picture as the eye at the camera's place would see it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/core/output/projection.h"

namespace nemra::core {

/// Per pixel, rows from the top.
struct VisualField {
    int width = 0;
    int height = 0;
    std::vector<float> luminance;                 ///< cd/m2; what isn't finite or is negative counts as 0
    std::vector<float> solidAngle;                ///< sr; 0 outside of what the instrument sees, and behind the eye
    std::vector<std::array<float, 3>> direction;  ///< unit vectors in the frame of the view

    std::size_t pixel(int x, int y) const { return std::size_t(y) * std::size_t(width) + std::size_t(x); }
    Vec3 directionOf(std::size_t pixel) const { return {direction[pixel][0], direction[pixel][1], direction[pixel][2]}; }
    /// Solid angle times the cosine to the line of sight: a luminance of 1 in the pixel gives that illuminance at the eye.
    double projected(std::size_t pixel) const { return double(solidAngle[pixel]) * double(direction[pixel][2]); }
};

/// Empty where luminances or directions aren't known; `why` then says the reason.
std::optional<VisualField> makeVisualField(const Raw& raw, std::string& why);

/// From luminances that are known already, one per pixel.
VisualField makeVisualField(const Projection& projection, int width, int height, std::vector<float> luminance);

}  // namespace nemra::core
