#include "scene/mesh.h"

#include <iostream>

#include "module/bound_class.h"
#include "module/buffer_order.h"
#include "module/owned_array.h"
#include "scene/array_shape.h"

namespace NemraNode {

namespace {

using SizeOf = std::uint32_t (*)(nemra_geom_t*);
template <class T>
using DataOf = const T* (*)(nemra_geom_t*);

/// Copy of one of the engine's buffers; empty for a null handle, and where the engine has none.
template <class T>
nemra::LargeVector<T> readBuffer(nemra_geom_t* mesh, SizeOf sizeOf, DataOf<T> dataOf) {
    if (!mesh) return {};
    const std::uint32_t size = sizeOf(mesh);
    const T* const data = dataOf(mesh);
    if (size == 0 || !data) return {};
    return nemra::LargeVector<T>(data, data + size);
}

template <class T>
py::array_t<T> asRows(nemra::LargeVector<T>&& data, std::size_t width) {
    const auto rows = static_cast<py::ssize_t>(data.size() / width);
    return Nemra::ownedArray(std::move(data), {rows, static_cast<py::ssize_t>(width)});
}

/// All rows of an array of that width, which has to stay; empty, with a printed line, for another shape.
template <class T>
Numbers<T> takeRows(const py::array_t<T>& array, int width) {
    if (!hasShape(array, -1, width)) return {};
    const py::ssize_t count = array.shape(0) * width;
    if (Nemra::liesInBufferOrder(array, count)) return {array.data(), static_cast<std::size_t>(count)};
    return Nemra::inBufferOrder<T, nemra::LargeVector<T>>(array, count);
}

std::shared_ptr<Mesh> meshOfArrays(const std::string& name, const py::array_t<double>& vertices,
                                   const py::array_t<float>& normals, const py::array_t<std::int32_t>& triangles,
                                   const py::array_t<float>& uvs) {
    MeshBuffers buffers;
    buffers.vertices = takeRows(vertices, 3);
    buffers.normals = takeRows(normals, 3);
    buffers.triangles = takeRows(triangles, 3);
    if (uvs.shape(0) != 0) buffers.uvs = takeRows(uvs, 2);
    return std::make_shared<Mesh>(name, std::move(buffers));
}

}  // namespace

Mesh::Mesh(const std::string& name, MeshBuffers buffers) {
    const std::size_t vertexCount = buffers.vertices.size() / 3;
    if (const std::size_t pairs = buffers.uvs.size() / 2; buffers.uvs.size() <= 2) {
        buffers.uvs.clear();
    } else if (pairs != vertexCount) {
        std::cout << "Please provide uv for each vertex " << pairs << "!=" << vertexCount << std::endl;
        return;
    }
    // The engine takes one normal per vertex for granted. Where the script gave fewer, zeros stand for the missing ones, so that
    // it doesn't read past the end.
    if (buffers.normals.size() != 0 && buffers.normals.size() < buffers.vertices.size())
        buffers.normals.padTo(buffers.vertices.size());
    handle = nemraMesh_create(name.c_str(), buffers.vertices.orNull(), buffers.normals.orNull(), buffers.uvs.orNull(),
                              static_cast<std::int32_t>(buffers.vertices.size()), buffers.triangles.orNull(),
                              static_cast<std::int32_t>(buffers.triangles.size()));
}

std::shared_ptr<Mesh> Mesh::copy() const {
    if (!handle) return std::make_shared<Mesh>();
    MeshBuffers buffers;
    buffers.uvs = readBuffer<float>(handle, nemraMesh_getUvsSize, nemraMesh_getUvs);
    buffers.triangles = readBuffer<std::int32_t>(handle, nemraMesh_getTrianglesSize, nemraMesh_getTriangles);
    buffers.normals = readBuffer<float>(handle, nemraMesh_getVextexNormalsSize, nemraMesh_getVextexNormals);
    buffers.vertices = readBuffer<double>(handle, nemraMesh_getVerticesSize, nemraMesh_getVertices);
    return std::make_shared<Mesh>(name(), std::move(buffers));
}

py::array_t<double> Mesh::getVertices() const {
    return asRows(readBuffer<double>(handle, nemraMesh_getVerticesSize, nemraMesh_getVertices), 3);
}

py::array_t<std::int32_t> Mesh::getTriangles() const {
    return asRows(readBuffer<std::int32_t>(handle, nemraMesh_getTrianglesSize, nemraMesh_getTriangles), 3);
}

py::array_t<float> Mesh::getVextexNormals() const {
    return asRows(readBuffer<float>(handle, nemraMesh_getVextexNormalsSize, nemraMesh_getVextexNormals), 3);
}

py::array_t<float> Mesh::getTriangleNormals() const {
    return asRows(readBuffer<float>(handle, nemraMesh_getTriangleNormalsSize, nemraMesh_getTriangleNormals), 3);
}

py::array_t<float> Mesh::getUvs() const { return asRows(readBuffer<float>(handle, nemraMesh_getUvsSize, nemraMesh_getUvs), 2); }

void bindMesh(py::module_& geometries) {
    Nemra::BoundClass<Mesh, Geometry, std::shared_ptr<Mesh>>(geometries, "Mesh")
        .def(py::init(&meshOfArrays), py::arg("name"), py::arg("vertices"), py::arg("normals"), py::arg("triangles"),
             py::arg("uvs") = py::array_t<float>(0))
        .def("copy", &Mesh::copy, "Create a copy of this mesh")
        .def("getVertices", &Mesh::getVertices, "Retrieve the vertices as a numpy array")
        .def("getTriangles", &Mesh::getTriangles, "Retrieve the triangles indices as a numpy array")
        .def("getVextexNormals", &Mesh::getVextexNormals, "Retrieve the vertex normals as a numpy array")
        .def("getTriangleNormals", &Mesh::getTriangleNormals, "Retrieve the triangle normals as a numpy array")
        .def("getUvs", &Mesh::getUvs, "Retrieve the uvs as a numpy array");
}

}  // namespace NemraNode
