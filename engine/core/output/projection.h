/// Where the pixels of a picture look: what solid angles, ratings of glare and the scattering of the eye need.
#pragma once

#include <memory>
#include <optional>

#include "engine/core/geometry/affine.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

/// Directions in the frame of the view: x to the right, y up, z along the line of sight, as the image shows them.
class Projection {
public:
    virtual ~Projection() = default;
    /// Unit vector of the point (x, y) of the image, in pixels from its left upper corner: the middle of the first pixel is
    /// (0.5, 0.5). Empty outside of what the instrument sees.
    virtual std::optional<Vec3> direction(double x, double y) const = 0;
};

/// `width` and `height` are those of the result.
using MakeProjection = std::unique_ptr<Projection> (*)(const node::Node& instrument, int width, int height);
/// Says how the instruments of that type project. False if it is known already.
bool addProjection(std::string_view instrumentType, MakeProjection make);

/// Null if the result has no instrument, or one whose pixels have no directions.
std::unique_ptr<Projection> projectionOf(const Raw& raw);

/// Solid angle that a pixel covers, sr: that of the spherical quadrilateral of its corners. A pixel at the edge of what the
/// instrument sees counts with the parts, of a division into 8 x 8, whose corners are all seen.
double solidAngle(const Projection& projection, int x, int y);

/// Angle across the pixel in the middle of the image, radians: the root of its solid angle. 0 if it sees nothing.
double pixelAngle(const Projection& projection, int width, int height);

}  // namespace nemra::core
