/// How a source's place in the visual field weighs in ratings of glare. Directions are in the frame of the view: x to the right,
/// y up, z along the line of sight, which the methods take to be horizontal.
#pragma once

#include <optional>
#include <string>

#include "engine/core/geometry/affine.h"

namespace nemra::core {

struct PositionIndex {
    std::optional<double> value;
    std::string excluded;  ///< why there is none
};

/// Table 4.1 of CIE 117:1995, linear between its entries in T/R and H/R. None beyond the table, next to one of its empty cells
/// (the brow hides the source) and below the line of sight. `radius` is that of the source, radians: one whose middle lies below
/// the line of sight by less than that counts as on it.
PositionIndex tableIndex(const Vec3& direction, double radius);

/// Closed forms. Above the line of sight that of the IES Lighting Handbook after Levin (1975):
///   ln p = (35.2 - 0.31889 t - 1.22 exp(-2 t / 9)) 1e-3 s + (21 + 0.26667 t - 0.002963 t^2) 1e-5 s^2
/// with s the angle to the line of sight and t that of the plane through both to the vertical, degrees. Below it (Iwata and
/// Tokura, "Position Index for a Glare Source Located below the Line of Vision", Lighting Research and Technology 29(3), 1997)
///   p = 1 + 0.8 r for r up to 0.6, else 1 + 1.2 r, with r = tan s, at most 3.
PositionIndex formulaIndex(const Vec3& direction);

}  // namespace nemra::core
