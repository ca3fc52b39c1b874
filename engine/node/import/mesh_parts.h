/// What readers of mesh files give, before unit and axes are changed.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "engine/node/geometry.h"

namespace nemra::node {

struct MeshPart {
    std::string name;          ///< "" where the file gives none
    std::string materialName;  ///< "" for none
    Mesh mesh;
};

/// A part as it stands in the file's scene.
struct PartPlacing {
    std::size_t part;
    std::array<double, 16> transform = Instance{}.transform;
};

struct MeshParts {
    std::vector<MeshPart> parts;
    std::vector<PartPlacing> placings;
};

/// Why and where reading a mesh file stops.
struct MeshFault {
    std::string where;  ///< "line 3", "byte 17", "meshes[0]"; "" for the file as a whole
    std::string text;
};

}  // namespace nemra::node
