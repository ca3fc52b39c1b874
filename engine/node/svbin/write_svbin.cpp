#include <algorithm>

#include "engine/node/svbin/svbin.h"
#include "engine/node/svbin/write_parts.h"

namespace nemra::node {

namespace svbin {

namespace {

std::size_t arrayBytes(const Geometry& geometry) {
    const auto* const mesh = std::get_if<Mesh>(&geometry.shape);
    const auto bytes = [](const auto& numbers) { return numbers.size() * sizeof numbers[0]; };
    return mesh == nullptr ? 0 : bytes(mesh->vertices) + bytes(mesh->normals) + bytes(mesh->uvs) + bytes(mesh->triangles);
}

/// So much that a scene of meshes and instances needs no growth.
std::size_t expectedBytes(const Scene& scene) {
    std::size_t bytes = 4096 + 512 * (scene.nodes.size() + scene.geometries.size() + scene.instances.size());
    for (const auto& geometry : scene.geometries) bytes += arrayBytes(*geometry);
    return bytes;
}

Offset<fb::Node> writeOwn(FileBuilder& file, const Node* material) {
    return material == nullptr ? Offset<fb::Node>() : writeNode(file, *material, {});
}

Offset<fb::MeshFrame> writeFrame(FileBuilder& file, const MeshFrame& frame) {
    if (frame.unit == LengthUnit::unset && frame.up == UpAxis::unset) return {};
    const Text unit = file.textOrNone(nameOf(frame.unit));
    const Text up = file.textOrNone(nameOf(frame.up));
    return fb::CreateMeshFrame(file.tables(), unit, up);
}

Offset<void> writeShape(FileBuilder& file, const Mesh& mesh) {
    const auto vertices = file.numbers(mesh.vertices);
    const auto normals = file.numbers(mesh.normals);
    const auto uvs = file.numbers(mesh.uvs);
    const auto triangles = file.numbers(mesh.triangles);
    const Text path = file.textOrNone(mesh.file.path);
    const Text part = file.textOrNone(mesh.file.part);
    const auto frame = writeFrame(file, mesh.file.frame);
    return fb::CreateMesh(file.tables(), vertices, normals, uvs, triangles, path, part, frame).Union();
}

Offset<void> writeShape(FileBuilder& file, const Sphere& sphere) {
    return fb::CreateSphere(file.tables(), sphere.radius, sphere.reverse).Union();
}

Offset<void> writeShape(FileBuilder& file, const Cone& cone) {
    return fb::CreateCone(file.tables(), cone.topRadius, cone.reverse).Union();
}

Offset<fb::Scene> writeScene(FileBuilder& file, const Scene& scene) {
    const MaterialNames names(scene);
    std::vector<Offset<fb::Import>> imports;
    std::vector<Offset<fb::Node>> nodes;
    std::vector<Offset<fb::Geometry>> geometries;
    std::vector<Offset<fb::Instance>> instances;
    for (const Import& import : scene.imports) {
        const Text path = file.text(import.path);
        const Text prefix = file.textOrNone(import.prefix);
        const auto frame = writeFrame(file, import.frame);
        imports.push_back(fb::CreateImport(file.tables(), path, prefix, frame, import.instances));
    }
    for (const auto& node : scene.nodes) nodes.push_back(writeNode(file, *node, node->family()));
    for (const auto& geometry : scene.geometries) geometries.push_back(writeGeometry(file, *geometry, names));
    for (const auto& instance : scene.instances) instances.push_back(writeInstance(file, *instance, names));
    const Text name = file.textOrNone(scene.name);
    const Text setup = file.textOrNone(scene.activeSetup);
    const auto searchPaths = file.texts(scene.searchPaths);
    const auto importList = file.list(imports);
    const auto nodeList = file.list(nodes);
    const auto geometryList = file.list(geometries);
    const auto instanceList = file.list(instances);
    return fb::CreateScene(file.tables(), name, setup, searchPaths, importList, nodeList, geometryList, instanceList);
}

}  // namespace

Offset<fb::Geometry> writeGeometry(FileBuilder& file, const Geometry& geometry, const MaterialNames& names) {
    constexpr fb::Shape kShapes[] = {fb::Shape_Mesh, fb::Shape_Sphere, fb::Shape_Cone};
    const auto shape = std::visit([&](const auto& one) { return writeShape(file, one); }, geometry.shape);
    const Text name = file.textOrNone(geometry.name);
    const Text materialName = file.textOrNone(names.nameOf(geometry.material, geometry.materialName));
    const auto own = writeOwn(file, names.ownOf(geometry.material));
    return fb::CreateGeometry(file.tables(), name, materialName, own, kShapes[geometry.shape.index()], shape);
}

Offset<fb::Instance> writeInstance(FileBuilder& file, const Instance& instance, const MaterialNames& names) {
    std::vector<Offset<fb::Layer>> layers;
    for (const auto& path : instance.layers) {
        const auto pathNames = file.texts(path);
        layers.push_back(fb::CreateLayer(file.tables(), pathNames));
    }
    const Text geometry = file.textOrNone(instance.geometryName);
    const Text materialName = file.textOrNone(names.nameOf(instance.material, instance.materialName));
    const auto own = writeOwn(file, names.ownOf(instance.material));
    const auto layerList = file.list(layers);
    const fb::Transform transform(flatbuffers::span<const double, 16>(instance.transform.data(), 16));
    const bool isIdentity = instance.transform == Instance{}.transform;
    return fb::CreateInstance(file.tables(), geometry, isIdentity ? nullptr : &transform, materialName, own,
                              instance.materialIsFallback, layerList);
}

}  // namespace svbin

Buffer writeSvbin(const Scene& scene) {
    svbin::FileBuilder file(svbin::expectedBytes(scene));
    return file.finish(fb::Contents_Scene, svbin::writeScene(file, scene));
}

Buffer writeSvbin(const Node& node) {
    svbin::FileBuilder file(1024);
    return file.finish(fb::Contents_Node, svbin::writeNode(file, node, node.family()));
}

Buffer writeSvbin(const Geometry& geometry) {
    svbin::FileBuilder file(svbin::arrayBytes(geometry) + 4096);
    return file.finish(fb::Contents_Geometry, svbin::writeGeometry(file, geometry, MaterialNames()));
}

Buffer writeSvbin(const Instance& instance) {
    svbin::FileBuilder file(1024);
    return file.finish(fb::Contents_Instance, svbin::writeInstance(file, instance, MaterialNames()));
}

}  // namespace nemra::node
