#include <algorithm>

#include "engine/node/mesh.h"
#include "engine/node/svxml/numbers.h"
#include "engine/node/svxml/read_parts.h"
#include "engine/node/svxml/values.h"

namespace nemra::node::svxml {

namespace {

/// Layer names from a path: "/" stands between them, a backslash before a "/" or backslash of a name.
std::vector<std::string> splitLayerPath(std::string_view path) {
    std::vector<std::string> names;
    std::string name;
    for (std::size_t i = 0; i <= path.size(); ++i) {
        if (i == path.size() || path[i] == '/') {
            if (!name.empty()) names.push_back(std::move(name));
            name.clear();
        } else {
            if (path[i] == '\\' && i + 1 < path.size()) ++i;
            name += path[i];
        }
    }
    return names;
}

/// Takes some of `text` off its front, up to a blank.
std::string_view takePiece(std::string_view& text) {
    constexpr std::size_t kPiece = std::size_t{4} << 20;
    std::size_t end = std::min(kPiece, text.size());
    while (end < text.size() && !isBlank(text[end])) ++end;
    const std::string_view piece = text.substr(0, end);
    text.remove_prefix(end);
    return piece;
}

template <class Number>
void readArray(Source& source, pugi::xml_node element, const Geometry& geometry, SharedArray<Number>& numbers) {
    if (!numbers.empty()) source.fail(element, label(geometry) + ": a second element '" + element.name() + "'");
    source.checkAttributes(element, {});
    const ElementText text(source, element);
    const std::string what = label(geometry) + ": " + element.name();
    LargeVector<Number> read;
    read.reserve(countWords(text.view()));
    // Piece by piece, so that the memory of the numbers comes as that of their text goes.
    for (std::string_view left = text.view(); !left.empty();) {
        const std::string_view piece = takePiece(left);
        appendNumbers(read, source, piece, source.offsetOf(element), what);
        source.drop(piece);
    }
    numbers = std::move(read);
}

template <class Number>
Number readScalar(Source& source, pugi::xml_node element, const Geometry& geometry, const char* attribute, Number otherwise) {
    const pugi::xml_attribute found = element.attribute(attribute);
    if (!found) return otherwise;
    Number number{};
    std::string_view text = found.value();
    if (parseNumber(takeWord(text), number) != NumberFault::none || !takeWord(text).empty())
        throw Fault{source.offsetOf(found), label(geometry) + ": " + attribute + " isn't a number"};
    return number;
}

/// Where the place matters most, an index out of range, the message says the triangle; the place is the element's.
void check(Source& source, pugi::xml_node element, const Geometry& geometry) {
    const std::string why = whyRefused(geometry);
    if (!why.empty()) source.fail(element, label(geometry) + ": " + why);
}

void readMeshArrays(Source& source, pugi::xml_node element, Geometry& geometry, Mesh& mesh) {
    for (const pugi::xml_node part : element.children()) {
        const std::string_view name = part.name();
        if (name == "vertices") {
            readArray(source, part, geometry, mesh.vertices);
        } else if (name == "normals") {
            readArray(source, part, geometry, mesh.normals);
        } else if (name == "uvs") {
            readArray(source, part, geometry, mesh.uvs);
        } else if (name == "triangles") {
            readArray(source, part, geometry, mesh.triangles);
        } else if (name == "material") {
            geometry.material = readNodeOfFamily(source, part, "material");
        } else {
            source.warnUnknown(part);
        }
    }
}

void readMaterialOnly(Source& source, pugi::xml_node element, Geometry& geometry) {
    for (const pugi::xml_node part : element.children()) {
        if (std::string_view(part.name()) == "material") {
            geometry.material = readNodeOfFamily(source, part, "material");
        } else {
            source.warnUnknown(part);
        }
    }
}

void readTransform(Source& source, pugi::xml_node element, Instance& instance) {
    source.checkAttributes(element, {});
    const std::string what = "instance of '" + instance.geometryName + "': transform";
    const ElementText text(source, element);
    const auto numbers = readNumbers<double>(source, text.view(), source.offsetOf(element), what);
    if (numbers.size() != 16) source.fail(element, what + ": 16 numbers expected, " + std::to_string(numbers.size()) + " found");
    std::copy(numbers.begin(), numbers.end(), instance.transform.begin());
    if (const std::string why = whyRefused(instance); !why.empty())
        source.fail(element, "instance of '" + instance.geometryName + "': " + why);
}

void readMesh(Source& source, pugi::xml_node element, Geometry& geometry, Mesh& mesh) {
    mesh.file.path = element.attribute("file").value();
    if (mesh.file.path.empty()) {
        source.checkAttributes(element, {"name", "material", "file"});
    } else {
        source.checkAttributes(element, {"name", "material", "file", "part", "unit", "up"});
        mesh.file.part = element.attribute("part").value();
        mesh.file.frame = readFrame(source, element);
    }
    readMeshArrays(source, element, geometry, mesh);
}

}  // namespace

MeshFrame readFrame(Source& source, pugi::xml_node element) {
    MeshFrame frame;
    for (const char* const name : {"unit", "up"}) {
        const pugi::xml_attribute attribute = element.attribute(name);
        if (!attribute) continue;
        const std::string why =
            name == std::string_view("unit") ? setUnit(frame, attribute.value()) : setUp(frame, attribute.value());
        if (!why.empty()) throw Fault{source.offsetOf(attribute), why};
    }
    return frame;
}

bool isGeometryElement(std::string_view name) { return name == "mesh" || name == "sphere" || name == "cone"; }

std::shared_ptr<Geometry> readGeometry(Source& source, pugi::xml_node element) {
    auto geometry = std::make_shared<Geometry>();
    const std::string_view kind = element.name();
    geometry->name = source.required(element, "name");
    geometry->materialName = element.attribute("material").value();
    if (kind == "mesh") {
        readMesh(source, element, *geometry, std::get<Mesh>(geometry->shape));
    } else if (kind == "sphere") {
        source.checkAttributes(element, {"name", "material", "radius", "reverse"});
        Sphere& sphere = geometry->shape.emplace<Sphere>();
        sphere.reverse = source.flag(element, "reverse", false);
        sphere.radius = readScalar(source, element, *geometry, "radius", sphere.radius);
        readMaterialOnly(source, element, *geometry);
    } else {
        source.checkAttributes(element, {"name", "material", "top_radius", "reverse"});
        Cone& cone = geometry->shape.emplace<Cone>();
        cone.reverse = source.flag(element, "reverse", false);
        cone.topRadius = readScalar(source, element, *geometry, "top_radius", cone.topRadius);
        readMaterialOnly(source, element, *geometry);
    }
    check(source, element, *geometry);
    return geometry;
}

std::shared_ptr<Instance> readInstance(Source& source, pugi::xml_node element) {
    auto instance = std::make_shared<Instance>();
    source.checkAttributes(element, {"geometry", "material", "material_is_fallback"});
    instance->geometryName = source.required(element, "geometry");
    instance->materialName = element.attribute("material").value();
    instance->materialIsFallback = source.flag(element, "material_is_fallback", false);
    for (const pugi::xml_node part : element.children()) {
        const std::string_view name = part.name();
        if (name == "transform") {
            readTransform(source, part, *instance);
        } else if (name == "layer") {
            source.checkAttributes(part, {"path"});
            instance->layers.push_back(splitLayerPath(source.required(part, "path")));
        } else if (name == "material") {
            instance->material = readNodeOfFamily(source, part, "material");
        } else {
            source.warnUnknown(part);
        }
    }
    return instance;
}

}  // namespace nemra::node::svxml
