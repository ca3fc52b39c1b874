/// Meshes checked and placed.
#pragma once

#include <vector>

#include "engine/core/geometry/affine.h"
#include "engine/core/kernel/kernel_scene.h"
#include "engine/core/translate/translation.h"
#include "engine/node/geometry.h"

namespace nemra::core {

/// The triangles that can be rendered: indices in range, vertices finite, some area. What is left out is counted, in one warning
/// for each reason.
std::vector<std::int32_t> usableTriangles(const node::Mesh& mesh, const std::string& label, Translation& translation);

struct PlacedMesh {
    std::vector<TriangleRecord> triangles;
    std::vector<NormalsRecord> normals;  ///< TriangleRecord::normals counts from 0 here
    double area = 0.0;                   ///< m2, after placing
    std::size_t flattened = 0;           ///< triangles left out
};

/// Triangles mapped by `placing` in double precision and rounded once; those that end up without area are left out.
/// The front side stays the front side under mirroring.
PlacedMesh placeMesh(const node::Mesh& mesh, const std::vector<std::int32_t>& triangles, const Affine& placing);

/// Rounding error of positions of that size, with a margin: how far a new ray starts off the surface.
float safeOffset(double magnitude) noexcept;

}  // namespace nemra::core
