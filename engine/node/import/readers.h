/// The readers of the single formats. All throw a MeshFault for what is broken, and none trusts a number of the file: counts and
/// places are checked against the bytes there are before anything is reserved or read.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "engine/node/import/mesh_parts.h"

namespace nemra::node {

/// A word of a file as messages show it: in quotes, cut where it is long, as UTF-8 whatever the file holds.
std::string quoted(std::string_view word);

/// Turk (1994), in the form that is in use: elements `vertex` (x y z, and if wanted nx ny nz and u v, s t or texture_u
/// texture_v) and `face` (vertex_indices or vertex_index). Other elements and properties are skipped.
MeshParts readPly(std::span<const char> bytes);
/// Polygons of the Wavefront form with v, vt, vn, f, o, g, usemtl. One part for each pair of group and material.
MeshParts readObj(std::span<const char> text);
/// glTF 2.0 (Khronos Group 2021): the triangles of the default scene's nodes. `folder` holds the files that it refers to.
MeshParts readGltf(std::span<const char> bytes, const std::string& folder);

}  // namespace nemra::node
