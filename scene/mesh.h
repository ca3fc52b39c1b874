/// Triangle meshes, built from numpy arrays and read back as such.
#pragma once

#include <string>
#include <vector>

#include "scene/geometry.h"

namespace NemraNode {

/// Flat buffers of a mesh as the engine takes them: x y z per vertex (metres) and per normal, three indices per triangle, u v
/// per vertex. Any but the vertices may be empty.
struct MeshBuffers {
    std::vector<double> vertices;
    std::vector<float> normals;
    std::vector<std::int32_t> triangles;
    std::vector<float> uvs;
};

class Mesh final : public Geometry {
public:
    explicit Mesh(nemra_geom_t* engineHandle = nullptr) : Geometry(engineHandle) {}
    /// A new engine mesh. More than one pair of uvs has to be one per vertex, else a line on the process's standard output says
    /// so and the mesh is a deleted one; a single pair is dropped.
    Mesh(const std::string& name, MeshBuffers buffers);

    void concrete() override {}

    /// A new engine mesh without the material; deleted if this one is.
    std::shared_ptr<Mesh> copy() const;

    // Rows of three, of two for the uvs; no rows for a deleted or empty mesh.
    py::array_t<double> getVertices() const;
    py::array_t<std::int32_t> getTriangles() const;
    py::array_t<float> getVextexNormals() const;
    py::array_t<float> getTriangleNormals() const;
    py::array_t<float> getUvs() const;
};

}  // namespace NemraNode
