#include "engine/node/import/read_mesh_file.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <unordered_map>
#include <unordered_set>

#include "engine/common/log.h"
#include "engine/node/encoding/utf8.h"
#include "engine/node/import/readers.h"
#include "engine/node/mesh.h"

namespace nemra::node {

namespace {

using Matrix3 = std::array<double, 9>;

std::array<double, 3> times(const Matrix3& m, const double* p) {
    return {m[0] * p[0] + m[1] * p[1] + m[2] * p[2], m[3] * p[0] + m[4] * p[1] + m[5] * p[2],
            m[6] * p[0] + m[7] * p[1] + m[8] * p[2]};
}

Matrix3 linearOf(const std::array<double, 16>& m) { return {m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10]}; }

/// The inverse's transpose times the determinant: turns normals.
Matrix3 cofactors(const Matrix3& m) {
    return {m[4] * m[8] - m[5] * m[7], m[5] * m[6] - m[3] * m[8], m[3] * m[7] - m[4] * m[6],
            m[2] * m[7] - m[1] * m[8], m[0] * m[8] - m[2] * m[6], m[1] * m[6] - m[0] * m[7],
            m[1] * m[5] - m[2] * m[4], m[2] * m[3] - m[0] * m[5], m[0] * m[4] - m[1] * m[3]};
}

double determinant(const Matrix3& m) {
    const Matrix3 c = cofactors(m);
    return m[0] * c[0] + m[1] * c[1] + m[2] * c[2];
}

/// Names can be in any encoding in old files; scenes take UTF-8.
void makeText(std::string& name) {
    for (std::size_t at = firstNotText(name); at < name.size(); at = firstNotText(name)) name[at] = '_';
}

/// Into the engine's axes and metres. A placing T becomes C T C^-1, so that points C p land at C (T p).
void change(MeshParts& read, const MeshFrame& frame) {
    if (frame.up != UpAxis::z && (frame.unit == LengthUnit::unset || frame.unit == LengthUnit::m)) return;
    const auto [rotation, scale] = changeOf(frame);
    for (MeshPart& part : read.parts) {
        auto& vertices = part.mesh.vertices.edit();
        for (std::size_t i = 0; i + 2 < vertices.size(); i += 3) {
            const auto turned = times(rotation, &vertices[i]);
            for (std::size_t k = 0; k < 3; ++k) vertices[i + k] = turned[k] * scale;
        }
        auto& normals = part.mesh.normals.edit();
        for (std::size_t i = 0; i + 2 < normals.size(); i += 3) {
            const double normal[] = {normals[i], normals[i + 1], normals[i + 2]};
            const auto turned = times(rotation, normal);
            for (std::size_t k = 0; k < 3; ++k) normals[i + k] = static_cast<float>(turned[k]);
        }
    }
    for (PartPlacing& placing : read.placings) {
        const auto before = placing.transform;
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) {
                double sum = 0.0;
                for (std::size_t a = 0; a < 3; ++a)
                    for (std::size_t b = 0; b < 3; ++b)
                        sum += rotation[3 * row + a] * before[4 * a + b] * rotation[3 * column + b];
                placing.transform[4 * row + column] = sum;
            }
            const double moved[] = {before[3], before[7], before[11]};
            placing.transform[4 * row + 3] = times(rotation, moved)[row] * scale;
        }
    }
}

/// Leaves out what has no triangles.
void dropEmpty(MeshParts& read) {
    constexpr std::size_t kDropped = std::numeric_limits<std::size_t>::max();
    std::vector<std::size_t> place(read.parts.size(), kDropped);
    std::vector<MeshPart> kept;
    for (std::size_t i = 0; i < read.parts.size(); ++i) {
        if (read.parts[i].mesh.triangles.empty()) continue;
        place[i] = kept.size();
        kept.push_back(std::move(read.parts[i]));
    }
    std::erase_if(read.placings, [&](PartPlacing& placing) {
        placing.part = place[placing.part];
        return placing.part == kDropped;
    });
    read.parts = std::move(kept);
}

/// Gives every part a name of its own: its own name or `otherwise`, with _2, _3 where others had it before.
void nameParts(MeshParts& read, const std::string& otherwise) {
    std::unordered_set<std::string> taken;
    std::unordered_map<std::string, std::size_t> last;
    for (MeshPart& part : read.parts) {
        makeText(part.name);
        makeText(part.materialName);
        if (part.name.empty()) part.name = otherwise;
        if (taken.insert(part.name).second) continue;
        std::size_t& number = last.try_emplace(part.name, 1).first->second;
        std::string other;
        do {
            other = part.name + "_" + std::to_string(++number);
        } while (!taken.insert(other).second);
        part.name = std::move(other);
    }
}

void check(const MeshParts& read) {
    if (read.parts.empty()) throw MeshFault{"", "it holds no triangles"};
    for (const MeshPart& part : read.parts)
        if (const std::string why = whyRefused(part.mesh); !why.empty()) throw MeshFault{"part '" + part.name + "'", why};
    for (const PartPlacing& placing : read.placings) {
        Instance instance;
        instance.transform = placing.transform;
        if (const std::string why = whyRefused(instance); !why.empty())
            throw MeshFault{"part '" + read.parts[placing.part].name + "'", why};
    }
}

void append(Mesh& whole, const Mesh& mesh, const std::array<double, 16>& transform, bool withNormals, bool withUvs) {
    const auto first = static_cast<std::int32_t>(whole.vertices.size() / 3);
    if (whole.vertices.size() / 3 + mesh.vertices.size() / 3 > 0x7fffffffU)
        throw MeshFault{"", "its parts have more than 2^31 vertices together"};
    const Matrix3 linear = linearOf(transform);
    const bool mirrors = determinant(linear) < 0.0;
    Matrix3 turning = cofactors(linear);
    if (mirrors)
        for (double& number : turning) number = -number;
    for (std::size_t i = 0; i < mesh.vertices.size(); i += 3) {
        const auto p = times(linear, &mesh.vertices[i]);
        for (std::size_t k = 0; k < 3; ++k) whole.vertices.push_back(p[k] + transform[4 * k + 3]);
    }
    for (std::size_t i = 0; withNormals && i < mesh.normals.size(); i += 3) {
        const double before[] = {mesh.normals[i], mesh.normals[i + 1], mesh.normals[i + 2]};
        const auto n = times(turning, before);
        const double length = std::hypot(n[0], n[1], n[2]);
        for (const double component : n) whole.normals.push_back(static_cast<float>(length > 0.0 ? component / length : 0.0));
    }
    if (withUvs) whole.uvs.insert(whole.uvs.end(), mesh.uvs.begin(), mesh.uvs.end());
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        whole.triangles.push_back(first + mesh.triangles[i]);
        whole.triangles.push_back(first + mesh.triangles[i + (mirrors ? 2 : 1)]);  // so that the front stays outside
        whole.triangles.push_back(first + mesh.triangles[i + (mirrors ? 1 : 2)]);
    }
}

}  // namespace

std::string quoted(std::string_view word) {
    constexpr std::size_t kMost = 40;
    std::string text(word.substr(0, kMost));
    makeText(text);
    text.insert(text.begin(), '\'');
    text += '\'';
    return text;
}

MeshFormat meshFormatOf(std::span<const char> bytes, const std::string& path) {
    const std::string_view text(bytes.data(), bytes.size());
    if (text.starts_with("ply\n") || text.starts_with("ply\r")) return MeshFormat::ply;
    if (text.starts_with("glTF")) return MeshFormat::gltf;
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first != std::string_view::npos && text[first] == '{') return MeshFormat::gltf;
    std::string end = std::filesystem::path(path).extension().string();
    for (char& c : end)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return end == ".obj" ? MeshFormat::obj : MeshFormat::none;
}

bool readMeshFile(std::span<const char> bytes, const std::string& path, const MeshFrame& frame, MeshParts& parts) {
    const std::filesystem::path file(path);
    try {
        MeshParts read;
        if (bytes.empty()) throw MeshFault{"", "there is nothing in it"};
        switch (meshFormatOf(bytes, path)) {
            case MeshFormat::ply:
                read = readPly(bytes);
                break;
            case MeshFormat::obj:
                read = readObj(bytes);
                break;
            case MeshFormat::gltf:
                read = readGltf(bytes, file.parent_path().string());
                break;
            case MeshFormat::none:
                throw MeshFault{"", "unknown format: neither a scene nor a PLY, OBJ or glTF file"};
        }
        dropEmpty(read);
        nameParts(read, file.stem().empty() ? "mesh" : file.stem().string());
        change(read, frame);
        check(read);
        parts = std::move(read);
        return true;
    } catch (const MeshFault& fault) {
        log::error(fault.where.empty() ? path : path + ": " + fault.where, fault.text);
    } catch (const std::bad_alloc&) {
        log::error(path, "not enough memory to read this");
    } catch (const std::exception& fault) {
        log::error(path, std::string("can't be read: ") + fault.what());
    }
    return false;
}

Mesh joinParts(const MeshParts& parts, const std::string& name) {
    std::vector<const PartPlacing*> chosen;
    bool withNormals = true;
    bool withUvs = true;
    for (const PartPlacing& placing : parts.placings) {
        const MeshPart& part = parts.parts[placing.part];
        if (!name.empty() && part.name != name) continue;
        chosen.push_back(&placing);
        withNormals &= !part.mesh.normals.empty();
        withUvs &= !part.mesh.uvs.empty();
    }
    if (chosen.empty()) {
        std::string names;
        for (std::size_t i = 0; i < parts.parts.size() && i < 10; ++i)
            names += (i == 0 ? "'" : ", '") + parts.parts[i].name + "'";
        throw MeshFault{"", "it has no part '" + name + "' in place; it has " + names};
    }
    Mesh whole;
    for (const PartPlacing* placing : chosen)
        append(whole, parts.parts[placing->part].mesh, placing->transform, withNormals, withUvs);
    return whole;
}

}  // namespace nemra::node
