/// Imports by reference and meshes that name a file, turned into what they stand for.
#pragma once

#include <string>

#include "engine/node/encoding/report.h"
#include "engine/node/import/find_file.h"
#include "engine/node/scene.h"

namespace nemra::node {

/// Readings of files that one call makes at most, and bytes in all of them together: files may import one another many times.
constexpr std::size_t kMaxImportedFiles = 4096;
constexpr std::size_t kMaxImportedBytes = std::size_t{4} << 30U;

/// Loads what the scene imports, at any depth, and fills the meshes that name a file. Afterwards the scene has no imports.
/// `file` is the scene's own file, in whose folder relative paths are looked for first, then in its search paths; "" for a
/// scene without a file. Setups of imported files come along only where the scene has none itself. On failure one error
/// message with file and cause, and false; the scene is as it was.
NEMRA_API bool loadImports(Scene& scene, const std::string& file, Unknown unknown);

/// Loads one import of a scene with these search paths, by the same rules. `loaded` becomes what the import brings.
NEMRA_API bool loadImport(const Import& import, const Scene& into, Unknown unknown, Scene& loaded);

/// Moves what an import brings behind what the scene has. False after one error message, with both as they were, if a geometry
/// would have the name of one that is there: instances would place the wrong one.
NEMRA_API bool joinScenes(Scene& scene, Scene& loaded, const std::string& path);

}  // namespace nemra::node
