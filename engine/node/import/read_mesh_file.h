/// Files of meshes: PLY (text, binary of both byte orders), OBJ, glTF 2.0 (text with files beside it, or GLB).
#pragma once

#include <span>
#include <string>

#include "engine/node/import/mesh_parts.h"

namespace nemra::node {

enum class MeshFormat { none, ply, obj, gltf };

/// From the bytes; OBJ, which has no mark, from the end of the path.
NEMRA_API MeshFormat meshFormatOf(std::span<const char> bytes, const std::string& path);

/// Reads parts into metres and the engine's axes. `path` names the source in messages, and its folder holds the files that a
/// glTF file refers to. Every part has triangles and is sound, its name isn't empty and no other part's. On failure one error
/// message with file, place and cause, and false. Memory stays below 128 times the size of what is read (a file of nothing but
/// groups of one triangle); a few times is usual.
NEMRA_API bool readMeshFile(std::span<const char> bytes, const std::string& path, const MeshFrame& frame, MeshParts& parts);

/// The placed parts as one mesh; only those of that name unless `name` is empty. Throws a MeshFault if there is none.
/// Normals and texture coordinates stay only if all of them have some.
NEMRA_API Mesh joinParts(const MeshParts& parts, const std::string& name);

}  // namespace nemra::node
