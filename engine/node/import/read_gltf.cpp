#include <cmath>

#include "engine/node/import/gltf_data.h"
#include "engine/node/import/readers.h"

namespace nemra::node {

namespace {

using Matrix = std::array<double, 16>;

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix result{};
    for (std::size_t row = 0; row < 4; ++row)
        for (std::size_t column = 0; column < 4; ++column)
            for (std::size_t k = 0; k < 4; ++k) result[4 * row + column] += a[4 * row + k] * b[4 * k + column];
    return result;
}

template <std::size_t Count>
bool readNumbers(const Json& object, const char* key, const std::string& where, std::array<double, Count>& numbers) {
    const auto found = object.find(key);
    if (found == object.end()) return false;
    if (!found->is_array() || found->size() != Count)
        throw MeshFault{where + "." + key, std::to_string(Count) + " numbers expected"};
    for (std::size_t i = 0; i < Count; ++i) {
        if (!(*found)[i].is_number()) throw MeshFault{where + "." + key, "numbers expected"};
        numbers[i] = (*found)[i].get<double>();
    }
    return true;
}

/// Column by column in the file, or translation, rotation (a quaternion x y z w) and scale.
Matrix transformOf(const Json& node, const std::string& where) {
    Matrix columns{};
    if (readNumbers(node, "matrix", where, columns)) {
        Matrix rows{};
        for (std::size_t i = 0; i < 16; ++i) rows[i] = columns[4 * (i % 4) + i / 4];
        return rows;
    }
    std::array<double, 3> t{0, 0, 0};
    std::array<double, 4> q{0, 0, 0, 1};
    std::array<double, 3> s{1, 1, 1};
    readNumbers(node, "translation", where, t);
    readNumbers(node, "rotation", where, q);
    readNumbers(node, "scale", where, s);
    const double length = std::hypot(std::hypot(q[0], q[1], q[2]), q[3]);
    if (!(length > 0.0)) throw MeshFault{where + ".rotation", "it isn't a rotation"};
    const double x = q[0] / length;
    const double y = q[1] / length;
    const double z = q[2] / length;
    const double w = q[3] / length;
    return {s[0] * (1 - 2 * (y * y + z * z)),
            s[1] * 2 * (x * y - z * w),
            s[2] * 2 * (x * z + y * w),
            t[0],
            s[0] * 2 * (x * y + z * w),
            s[1] * (1 - 2 * (x * x + z * z)),
            s[2] * 2 * (y * z - x * w),
            t[1],
            s[0] * 2 * (x * z - y * w),
            s[1] * 2 * (y * z + x * w),
            s[2] * (1 - 2 * (x * x + y * y)),
            t[2],
            0,
            0,
            0,
            1};
}

/// Lists, strips and fans: glTF 2.0, section 3.7.2.1.
std::vector<std::int32_t> trianglesOf(const std::vector<std::uint32_t>& indices, std::size_t mode) {
    constexpr std::size_t kList = 4;
    constexpr std::size_t kStrip = 5;
    std::vector<std::int32_t> triangles;
    const auto add = [&](std::size_t a, std::size_t b, std::size_t c) {
        for (const std::size_t i : {a, b, c}) triangles.push_back(static_cast<std::int32_t>(indices[i]));
    };
    for (std::size_t i = 0; i + 2 < indices.size(); i += mode == kList ? 3 : 1) {
        if (mode == kList) {
            add(i, i + 1, i + 2);
        } else if (mode == kStrip) {
            add(i, i + 1 + i % 2, i + 2 - i % 2);
        } else {
            add(i + 1, i + 2, 0);
        }
    }
    return triangles;
}

class GltfReader {
public:
    GltfReader(std::span<const char> bytes, const std::string& folder) : data_(bytes, folder) {}

    MeshParts read() {
        meshes_.resize(data_.count("meshes"));
        isPlaced_.resize(data_.count("nodes"));
        const Matrix identity = Instance{}.transform;
        if (data_.count("scenes") > 0) {
            const std::size_t scene = GltfData::whole(data_.root(), "scene", "").value_or(0);
            placeNodes(data_.entry("scenes", scene), "nodes", "scenes[" + std::to_string(scene) + "]", identity, 0);
        } else {
            for (std::size_t mesh = 0; mesh < meshes_.size(); ++mesh) placeMesh(mesh, identity);
        }
        return std::move(read_);
    }

private:
    static constexpr int kMostLevels = 256;
    static constexpr std::size_t kBytesOfPlacing = 512;  ///< with the instance that comes of it

    void placeNodes(const Json& parent, const char* key, const std::string& where, const Matrix& transform, int level) {
        const auto list = parent.find(key);
        if (list == parent.end()) return;
        if (!list->is_array()) throw MeshFault{where + "." + key, "a list expected"};
        for (const Json& entry : *list) {
            if (!entry.is_number_unsigned()) throw MeshFault{where + "." + key, "numbers of nodes expected"};
            placeNode(entry.get<std::size_t>(), transform, level + 1);
        }
    }

    void placeNode(std::size_t index, const Matrix& above, int level) {
        const Json& node = data_.entry("nodes", index);
        const std::string where = "nodes[" + std::to_string(index) + "]";
        if (isPlaced_[index]) throw MeshFault{where, "it stands in the tree of nodes twice"};
        if (level > kMostLevels) throw MeshFault{where, "nodes nest deeper than " + std::to_string(kMostLevels)};
        isPlaced_[index] = true;
        const Matrix transform = product(above, transformOf(node, where));
        if (const auto mesh = GltfData::whole(node, "mesh", where)) placeMesh(*mesh, transform);
        placeNodes(node, "children", where, transform, level);
    }

    void placeMesh(std::size_t index, const Matrix& transform) {
        const Json& mesh = data_.entry("meshes", index);
        if (!meshes_[index]) meshes_[index] = readMesh(mesh, "meshes[" + std::to_string(index) + "]");
        for (const std::size_t part : *meshes_[index]) {
            data_.charge(kBytesOfPlacing);
            read_.placings.push_back({part, transform});
        }
    }

    std::vector<std::size_t> readMesh(const Json& mesh, const std::string& where) {
        std::vector<std::size_t> parts;
        const auto primitives = mesh.find("primitives");
        if (primitives == mesh.end() || !primitives->is_array()) throw MeshFault{where, "it lacks its primitives"};
        for (std::size_t i = 0; i < primitives->size(); ++i) {
            const Json& primitive = (*primitives)[i];
            const std::string place = where + ".primitives[" + std::to_string(i) + "]";
            if (!primitive.is_object()) throw MeshFault{place, "it isn't an object"};
            const std::size_t mode = GltfData::whole(primitive, "mode", place).value_or(4);
            if (mode < 4 || mode > 6) continue;  // points and lines
            parts.push_back(read_.parts.size());
            read_.parts.push_back(readPrimitive(primitive, GltfData::text(mesh, "name"), mode, place));
        }
        return parts;
    }

    MeshPart readPrimitive(const Json& primitive, const std::string& name, std::size_t mode, const std::string& where) {
        const auto attributes = primitive.find("attributes");
        if (attributes == primitive.end() || !attributes->is_object()) throw MeshFault{where, "it lacks its attributes"};
        const auto position = GltfData::whole(*attributes, "POSITION", where);
        if (!position) throw MeshFault{where, "it has no positions; compressed meshes can't be read"};
        MeshPart part;
        part.name = name;
        part.mesh.vertices = data_.numbers(*position, "VEC3", 3);
        if (const auto normal = GltfData::whole(*attributes, "NORMAL", where))
            part.mesh.normals = floats(data_.numbers(*normal, "VEC3", 3));
        if (const auto uv = GltfData::whole(*attributes, "TEXCOORD_0", where)) {
            auto uvs = floats(data_.numbers(*uv, "VEC2", 2));
            for (std::size_t i = 1; i < uvs.size(); i += 2) uvs[i] = 1.0F - uvs[i];  // from the top there
            part.mesh.uvs = uvs;
        }
        std::vector<std::uint32_t> indices;
        if (const auto accessor = GltfData::whole(primitive, "indices", where)) {
            indices = data_.indices(*accessor);
        } else {
            indices.resize(part.mesh.vertices.size() / 3);
            for (std::size_t i = 0; i < indices.size(); ++i) indices[i] = static_cast<std::uint32_t>(i);
        }
        data_.charge(3 * sizeof(std::int32_t) * indices.size());
        part.mesh.triangles = trianglesOf(indices, mode);
        if (const auto material = GltfData::whole(primitive, "material", where))
            part.materialName = GltfData::text(data_.entry("materials", *material), "name");
        return part;
    }

    static std::vector<float> floats(const std::vector<double>& numbers) { return {numbers.begin(), numbers.end()}; }

    GltfData data_;
    MeshParts read_;
    std::vector<std::optional<std::vector<std::size_t>>> meshes_;  // parts of the meshes read so far
    std::vector<bool> isPlaced_;
};

}  // namespace

MeshParts readGltf(std::span<const char> bytes, const std::string& folder) { return GltfReader(bytes, folder).read(); }

}  // namespace nemra::node
