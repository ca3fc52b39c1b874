#include "engine/node/mesh.h"
#include "engine/node/svxml/write_parts.h"

namespace nemra::node::svxml {

namespace {

void writeArray(XmlWriter& writer, const char* name, const auto& numbers, std::size_t perLine) {
    if (numbers.empty()) return;
    const Element element(writer, name);
    writer.numbers(numbers.data(), numbers.size(), perLine);
}

void writeMaterialName(XmlWriter& writer, const std::string& name) {
    if (!name.empty()) writer.attribute("material", name);
}

void writeArrays(XmlWriter& writer, const Mesh& mesh) {
    writeArray(writer, "vertices", mesh.vertices, 3);
    writeArray(writer, "normals", mesh.normals, 3);
    writeArray(writer, "uvs", mesh.uvs, 2);
    writeArray(writer, "triangles", mesh.triangles, 3);
}

void writeFile(XmlWriter& writer, const MeshFile& file) {
    if (file.path.empty()) return;
    writer.attribute("file", file.path);
    if (!file.part.empty()) writer.attribute("part", file.part);
    writeFrame(writer, file.frame);
}

void writeScalars(XmlWriter& writer, const Sphere& sphere) {
    writer.attribute("radius", sphere.radius);
    if (sphere.reverse) writer.attribute("reverse", "true");
}

void writeScalars(XmlWriter& writer, const Cone& cone) {
    writer.attribute("top_radius", cone.topRadius);
    if (cone.reverse) writer.attribute("reverse", "true");
}

std::string joinLayerPath(const std::vector<std::string>& names) {
    std::string path;
    for (const std::string& name : names) {
        if (!path.empty()) path += '/';
        for (const char c : name) {
            if (c == '/' || c == '\\') path += '\\';
            path += c;
        }
    }
    return path;
}

}  // namespace

void writeFrame(XmlWriter& writer, const MeshFrame& frame) {
    if (frame.unit != LengthUnit::unset) writer.attribute("unit", nameOf(frame.unit));
    if (frame.up != UpAxis::unset) writer.attribute("up", nameOf(frame.up));
}

void writeGeometry(XmlWriter& writer, const Geometry& geometry, const MaterialNames& names) {
    const Element element(writer, typeName(geometry));
    writer.attribute("name", geometry.name);
    writeMaterialName(writer, names.nameOf(geometry.material, geometry.materialName));
    const auto* const mesh = std::get_if<Mesh>(&geometry.shape);
    if (mesh != nullptr) writeFile(writer, mesh->file);
    if (const auto* sphere = std::get_if<Sphere>(&geometry.shape)) writeScalars(writer, *sphere);
    if (const auto* cone = std::get_if<Cone>(&geometry.shape)) writeScalars(writer, *cone);
    if (const Node* const own = names.ownOf(geometry.material)) writeNodeOfFamily(writer, "material", *own);
    if (mesh != nullptr) writeArrays(writer, *mesh);
}

void writeInstance(XmlWriter& writer, const Instance& instance, const MaterialNames& names) {
    const Element element(writer, "instance");
    writer.attribute("geometry", instance.geometryName);
    writeMaterialName(writer, names.nameOf(instance.material, instance.materialName));
    if (instance.materialIsFallback) writer.attribute("material_is_fallback", "true");
    if (instance.transform != Instance{}.transform) {
        const Element transform(writer, "transform");
        writer.numbers(instance.transform.data(), instance.transform.size(), 4);
    }
    for (const auto& path : instance.layers) {
        const Element layer(writer, "layer");
        writer.attribute("path", joinLayerPath(path));
    }
    if (const Node* const own = names.ownOf(instance.material)) writeNodeOfFamily(writer, "material", *own);
}

}  // namespace nemra::node::svxml
