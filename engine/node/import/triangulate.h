/// Polygons of files as triangles.
#pragma once

#include <cstdint>
#include <span>

#include "engine/common/large_vector.h"
#include "module/flat/nemra_types.h"

namespace nemra::node {

/// Corners of a polygon at most: cutting takes time that grows with their square.
constexpr std::size_t kMaxCorners = 1024;

/// Appends the triangles of a flat or nearly flat polygon, which may have dents but no holes, by cutting ears off (Meisters
/// 1975). `vertices` has x y z each; the corners are valid numbers of vertices. They keep their sense of turning.
NEMRA_API void triangulate(std::span<const double> vertices, std::span<const std::int32_t> corners,
                           LargeVector<std::int32_t>& triangles);

}  // namespace nemra::node
