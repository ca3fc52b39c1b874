// Meshes through the flat interface.
#include <span>

#include "engine/common/guarded.h"
#include "engine/common/slot_table.h"
#include "engine/common/text.h"
#include "engine/node/encoding/utf8.h"
#include "engine/node/mesh.h"
#include "module/flat/nemra_scene.h"

namespace {

using namespace nemra;
using namespace nemra::node;

template <class Number>
std::span<const Number> view(const Number* numbers, std::size_t count) {
    return {numbers, numbers == nullptr ? 0 : count};
}

/// How many normals have no length. A caller with fewer normals than vertices fills up with zeros, so the last one tells.
std::size_t missingNormals(std::span<const float> normals) {
    const auto isMissing = [&](std::size_t at) {
        return normals[at] == 0.0F && normals[at + 1] == 0.0F && normals[at + 2] == 0.0F;
    };
    if (normals.empty() || !isMissing(normals.size() - 3)) return 0;
    std::size_t missing = 0;
    for (std::size_t at = 0; at < normals.size(); at += 3) missing += isMissing(at);
    return missing;
}

/// Null for anything but a live mesh.
const Mesh* findMesh(nemra_geom_t* handle) {
    const auto geometry = find<Geometry>(handle);
    return geometry ? std::get_if<Mesh>(&geometry->shape) : nullptr;
}

/// An array of a mesh as the interface gives it: null when there is nothing in it.
template <class Choose>
auto data(const char* function, nemra_geom_t* handle, Choose&& choose) {
    using Pointer = decltype(choose(std::declval<const Mesh&>()).data());
    return guarded<Pointer>(function, nullptr, [&]() -> Pointer {
        const Mesh* const mesh = findMesh(handle);
        if (mesh == nullptr || choose(*mesh).empty()) return nullptr;
        return choose(*mesh).data();
    });
}

template <class Choose>
std::uint32_t size(const char* function, nemra_geom_t* handle, Choose&& choose) {
    return guarded<std::uint32_t>(function, 0, [&] {
        const Mesh* const mesh = findMesh(handle);
        return mesh == nullptr ? 0U : static_cast<std::uint32_t>(choose(*mesh).size());
    });
}

const auto& vertices(const Mesh& mesh) { return mesh.vertices; }
const auto& normals(const Mesh& mesh) { return mesh.normals; }
const auto& uvs(const Mesh& mesh) { return mesh.uvs; }
const auto& triangles(const Mesh& mesh) { return mesh.triangles; }

}  // namespace

extern "C" {

nemra_geom_t* nemraMesh_create(const char* name, const double* vertices, const float* normals, const float* uvs,
                               int32_t verticesCount, const int32_t* triangles, int32_t trianglesCount) {
    return guarded<nemra_geom_t*>(__func__, nullptr, [&]() -> nemra_geom_t* {
        auto geometry = std::make_shared<Geometry>();
        geometry->name = readableText(viewOf(name));
        const auto refuse = [&](const std::string& why) -> nemra_geom_t* {
            log::error(label(*geometry), "not created: " + why);
            return nullptr;
        };
        if (verticesCount < 0 || trianglesCount < 0) return refuse("negative count");
        if ((vertices == nullptr && verticesCount > 0) || (triangles == nullptr && trianglesCount > 0))
            return refuse("array missing");
        Mesh mesh;
        const auto count = static_cast<std::size_t>(verticesCount);
        const std::string why = copyChecked(mesh, view(vertices, count), view(normals, count), view(uvs, count / 3 * 2),
                                            view(triangles, static_cast<std::size_t>(trianglesCount)));
        if (!why.empty()) return refuse(why);
        if (const std::size_t missing = missingNormals({mesh.normals.data(), mesh.normals.size()}))
            log::warning(label(*geometry), std::to_string(missing) + " of its " + std::to_string(mesh.normals.size() / 3) +
                                               " normals have no length; triangles at those vertices are rendered flat");
        geometry->shape = std::move(mesh);
        return publish<nemra_geom_t>(geometry);
    });
}

uint32_t nemraMesh_getVerticesSize(nemra_geom_t* mesh) { return size(__func__, mesh, vertices); }
uint32_t nemraMesh_getVextexNormalsSize(nemra_geom_t* mesh) { return size(__func__, mesh, normals); }
uint32_t nemraMesh_getTriangleNormalsSize(nemra_geom_t* mesh) { return size(__func__, mesh, triangles); }
uint32_t nemraMesh_getTrianglesSize(nemra_geom_t* mesh) { return size(__func__, mesh, triangles); }
uint32_t nemraMesh_getUvsSize(nemra_geom_t* mesh) { return size(__func__, mesh, uvs); }

const double* nemraMesh_getVertices(nemra_geom_t* mesh) { return data(__func__, mesh, vertices); }
const float* nemraMesh_getVextexNormals(nemra_geom_t* mesh) { return data(__func__, mesh, normals); }
const float* nemraMesh_getTriangleNormals(nemra_geom_t* mesh) { return data(__func__, mesh, triangleNormals); }
const int32_t* nemraMesh_getTriangles(nemra_geom_t* mesh) { return data(__func__, mesh, triangles); }
const float* nemraMesh_getUvs(nemra_geom_t* mesh) { return data(__func__, mesh, uvs); }

}  // extern "C"
