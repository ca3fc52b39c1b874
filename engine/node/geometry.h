/// Geometries and instances as the engine keeps them. Lengths in metres.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "engine/node/mesh_frame.h"
#include "engine/node/node.h"
#include "engine/node/scene_place.h"
#include "engine/node/shared_array.h"

namespace nemra::node {

/// A file of meshes that a mesh stands for.
struct MeshFile {
    std::string path;  ///< "" for a mesh with arrays of its own
    std::string part;  ///< the one part of the file that is meant; "" for all of them together
    MeshFrame frame;
};

/// Either its arrays, or the name of a file and no arrays.
struct Mesh {
    SharedArray<double> vertices;                ///< 3 N: x y z
    SharedArray<float> normals;                  ///< 3 N, or empty: flat triangles
    SharedArray<float> uvs;                      ///< 2 N, or empty
    SharedArray<std::int32_t> triangles;         ///< 3 M vertex indices
    mutable SharedArray<float> triangleNormals;  ///< 3 M, made when first asked for
    MeshFile file;
};

struct Sphere {
    float radius = 1.0F;
    bool reverse = false;  ///< normals point inwards
};

/// Truncated cone about z: base radius 1 at z = 0, top radius `topRadius` at z = 1, open at both ends.
struct Cone {
    float topRadius = 0.0F;
    bool reverse = false;
};

struct Geometry {
    std::string name;
    std::string materialName;        ///< "" for none
    std::shared_ptr<Node> material;  ///< wins over the name
    std::variant<Mesh, Sphere, Cone> shape;
    ScenePlace place = {};
};

struct Instance {
    std::string geometryName;
    std::array<double, 16> transform{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};  ///< row-major, acts on column vectors
    std::string materialName;                                                          ///< "" for none
    std::shared_ptr<Node> material;                                                    ///< wins over the name
    bool materialIsFallback = false;               ///< holds only where the geometry has no material of its own
    std::vector<std::vector<std::string>> layers;  ///< paths of layer names, below the root of the layer tree
    ScenePlace place = {};
};

}  // namespace nemra::node
