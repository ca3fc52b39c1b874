/// Checks and derived data of geometries.
#pragma once

#include <span>
#include <string>

#include "engine/node/geometry.h"

namespace nemra::node {

/// Coordinates beyond this many metres are refused: their squares must stay within single precision.
constexpr double kMaxCoordinate = 1.0e18;

/// Empty if the mesh is sound, else why it is refused: counts that don't fit one another, indices out of range, coordinates that
/// aren't finite. Names the offending index.
NEMRA_API std::string whyRefused(const Mesh& mesh);
/// Copies a caller's arrays into `mesh`; the same answer, without another pass over the memory.
NEMRA_API std::string copyChecked(Mesh& mesh, std::span<const double> vertices, std::span<const float> normals,
                                  std::span<const float> uvs, std::span<const std::int32_t> triangles);
/// A radius must be finite and above zero, the top radius of a cone finite and not below zero.
NEMRA_API std::string whyRefused(const Sphere& sphere);
NEMRA_API std::string whyRefused(const Cone& cone);
/// Whichever shape it has.
NEMRA_API std::string whyRefused(const Geometry& geometry);
/// The transform must be finite.
NEMRA_API std::string whyRefused(const Instance& instance);

/// Unit normals of the triangles, by the right-hand rule over their vertices; zero where a triangle has no area.
/// Made once and kept in the mesh, which must be sound.
NEMRA_API const SharedArray<float>& triangleNormals(const Mesh& mesh);

/// "mesh", "sphere" or "cone"
NEMRA_API const char* typeName(const Geometry& geometry) noexcept;
/// "mesh 'name'", as messages name a geometry.
NEMRA_API std::string label(const Geometry& geometry);

}  // namespace nemra::node
