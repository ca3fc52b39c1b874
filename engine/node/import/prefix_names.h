/// Making the contents of another file part of a scene.
#pragma once

#include <string>

#include "engine/node/import/find_file.h"
#include "engine/node/scene.h"

namespace nemra::node {

/// Puts `prefix` before the names of all nodes and geometries, and before references to them: links, geometries and materials
/// of instances, materials of geometries. References to names that the scene doesn't have stay, since they mean somebody else's.
void prefixNames(Scene& scene, const std::string& prefix);

/// Makes the file names in nodes absolute that are found from `place`, so that they hold anywhere.
void anchorFiles(Scene& scene, const Place& place);

}  // namespace nemra::node
