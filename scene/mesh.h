/// Triangle meshes, built from numpy arrays and read back as such.
#pragma once

#include <span>
#include <string>

#include "engine/common/large_vector.h"
#include "scene/geometry.h"

namespace NemraNode {

/// Numbers on their way to the engine, which copies them: where they lie in somebody's memory, or a vector of their own.
template <class T>
class Numbers {
public:
    Numbers() = default;
    /// The memory has to stay as long as this.
    Numbers(const T* first, std::size_t count) : lent_(first, count) {}
    Numbers(nemra::LargeVector<T> own) : own_(std::move(own)), lent_(own_) {}
    Numbers(Numbers&&) = default;  // a vector keeps its storage when it is moved
    Numbers& operator=(Numbers&&) = default;

    std::size_t size() const noexcept { return lent_.size(); }
    const T* orNull() const noexcept { return lent_.empty() ? nullptr : lent_.data(); }
    void clear() noexcept { lent_ = {}; }
    /// Zeros at the end.
    void padTo(std::size_t count) {
        if (own_.empty()) own_.assign(lent_.begin(), lent_.end());
        own_.resize(count);
        lent_ = own_;
    }

private:
    nemra::LargeVector<T> own_;
    std::span<const T> lent_;
};

/// Flat buffers of a mesh as the engine takes them: x y z per vertex (metres) and per normal, three indices per triangle, u v
/// per vertex. Any but the vertices may be empty.
struct MeshBuffers {
    Numbers<double> vertices;
    Numbers<float> normals;
    Numbers<std::int32_t> triangles;
    Numbers<float> uvs;
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
