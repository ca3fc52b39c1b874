#include "engine/node/mesh.h"

#include <algorithm>
#include <cmath>

namespace nemra::node {

namespace {

using Vector = std::array<double, 3>;

Vector corner(const Mesh& mesh, std::size_t at) {
    const double* const p = mesh.vertices.data() + 3 * static_cast<std::size_t>(mesh.triangles[at]);
    return {p[0], p[1], p[2]};
}

Vector minus(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

Vector cross(const Vector& a, const Vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Coordinates of vertices, normals or uvs.
template <class Number>
struct Coordinates {
    using value_type = Number;

    /// Without a branch in the loop, so that several are looked at together.
    bool areSound(std::span<const Number> numbers) const {
        unsigned bad = 0;
        for (const Number x : numbers) bad += !(std::abs(x) <= static_cast<Number>(kMaxCoordinate));
        return bad == 0;
    }
    bool isSound(Number x) const { return std::abs(x) <= static_cast<Number>(kMaxCoordinate); }
    std::string fault(Number x, std::size_t at) const {
        return std::string(what) + " " + std::to_string(at / width) + " has a component (" + std::to_string(at % width) +
               ") that is " + (std::isfinite(x) ? "larger than 1e18" : "not finite");
    }

    std::size_t width;
    const char* what;
};

constexpr Coordinates<double> kVertices{3, "vertex"};
constexpr Coordinates<float> kNormals{3, "normal"};
constexpr Coordinates<float> kUvs{2, "uv"};

struct Indices {
    using value_type = std::int32_t;

    bool areSound(std::span<const std::int32_t> indices) const {
        std::uint32_t largest = 0;  // what is below zero counts as very large
        for (const std::int32_t i : indices) largest = std::max(largest, static_cast<std::uint32_t>(i));
        return indices.empty() || largest < vertices;
    }
    bool isSound(std::int32_t i) const { return static_cast<std::uint32_t>(i) < vertices; }
    std::string fault(std::int32_t i, std::size_t at) const {
        return "triangle " + std::to_string(at / 3) + " refers to vertex " + std::to_string(i) + ", the mesh has " +
               std::to_string(vertices) + " vertices";
    }

    std::size_t vertices;
};

/// Empty if all of these are sound.
template <class Rule, class Number>
std::string firstFault(const Rule& rule, const Number* numbers, std::size_t count) {
    if (rule.areSound({numbers, count})) return {};
    const Number* const bad = std::find_if(numbers, numbers + count, [&](Number x) { return !rule.isSound(x); });
    return rule.fault(*bad, static_cast<std::size_t>(bad - numbers));
}

/// Copies piece by piece and looks at each while it is in the cache. Empty if all are sound.
template <class Rule, class Number = typename Rule::value_type>
std::string copyAndCheck(const Rule& rule, std::span<const Number> from, SharedArray<Number>& to) {
    constexpr std::size_t kPiece = 2048;
    LargeVector<Number> copy;
    copy.reserve(from.size());
    bool sound = true;
    for (std::size_t at = 0; at < from.size() && sound; at += kPiece) {
        const auto piece = from.subspan(at, std::min(kPiece, from.size() - at));
        copy.insert(copy.end(), piece.begin(), piece.end());
        sound = rule.areSound({copy.data() + at, piece.size()});
    }
    if (!sound) return firstFault(rule, from.data(), from.size());
    to = std::move(copy);
    return {};
}

std::string whyCountsDiffer(std::size_t vertexNumbers, std::size_t normals, std::size_t uvs, std::size_t triangles) {
    const auto count = [](const char* what, std::size_t is) { return std::to_string(is) + " numbers for the " + what; };
    if (vertexNumbers % 3 != 0) return count("vertices", vertexNumbers) + ", not a multiple of 3";
    if (triangles % 3 != 0) return count("triangles", triangles) + ", not a multiple of 3";
    const std::size_t vertices = vertexNumbers / 3;
    if (normals != 0 && normals != 3 * vertices) return count("normals", normals) + ", expected " + std::to_string(3 * vertices);
    if (uvs != 0 && uvs != 2 * vertices) return count("uvs", uvs) + ", expected " + std::to_string(2 * vertices);
    return {};
}

}  // namespace

std::string whyRefused(const Mesh& mesh) {
    if (!mesh.file.path.empty() && !(mesh.vertices.empty() && mesh.normals.empty() && mesh.uvs.empty() && mesh.triangles.empty()))
        return "it names a file and has arrays of its own";
    std::string why = whyCountsDiffer(mesh.vertices.size(), mesh.normals.size(), mesh.uvs.size(), mesh.triangles.size());
    const auto check = [&](const auto& rule, const auto& numbers) {
        if (why.empty()) why = firstFault(rule, numbers.data(), numbers.size());
    };
    check(Indices{mesh.vertices.size() / 3}, mesh.triangles);
    check(kVertices, mesh.vertices);
    check(kNormals, mesh.normals);
    check(kUvs, mesh.uvs);
    return why;
}

std::string copyChecked(Mesh& mesh, std::span<const double> vertices, std::span<const float> normals, std::span<const float> uvs,
                        std::span<const std::int32_t> triangles) {
    std::string why = whyCountsDiffer(vertices.size(), normals.size(), uvs.size(), triangles.size());
    const auto copy = [&](const auto& rule, const auto& from, auto& to) {
        if (why.empty()) why = copyAndCheck(rule, from, to);
    };
    copy(Indices{vertices.size() / 3}, triangles, mesh.triangles);
    copy(kVertices, vertices, mesh.vertices);
    copy(kNormals, normals, mesh.normals);
    copy(kUvs, uvs, mesh.uvs);
    return why;
}

std::string whyRefused(const Sphere& sphere) {
    if (sphere.radius > static_cast<float>(kMaxCoordinate) && std::isfinite(sphere.radius))
        return "the radius is larger than 1e18";
    return sphere.radius > 0.0F && std::isfinite(sphere.radius) ? "" : "the radius must be finite and above zero";
}

std::string whyRefused(const Cone& cone) {
    if (cone.topRadius > static_cast<float>(kMaxCoordinate) && std::isfinite(cone.topRadius))
        return "the top radius is larger than 1e18";
    return cone.topRadius >= 0.0F && std::isfinite(cone.topRadius) ? "" : "the top radius must be finite and not below zero";
}

std::string whyRefused(const Geometry& geometry) {
    return std::visit([](const auto& shape) { return whyRefused(shape); }, geometry.shape);
}

std::string whyRefused(const Instance& instance) {
    const auto& transform = instance.transform;
    const auto bad = std::find_if(transform.begin(), transform.end(), [](double x) { return !std::isfinite(x); });
    if (bad == transform.end()) return {};
    return "transform: element " + std::to_string(bad - transform.begin()) + " isn't finite";
}

const SharedArray<float>& triangleNormals(const Mesh& mesh) {
    if (mesh.triangleNormals.size() == mesh.triangles.size()) return mesh.triangleNormals;
    LargeVector<float> normals(mesh.triangles.size(), 0.0F);
    for (std::size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
        const Vector a = corner(mesh, t);
        const Vector n = cross(minus(corner(mesh, t + 1), a), minus(corner(mesh, t + 2), a));
        const double length = std::hypot(n[0], n[1], n[2]);
        if (!(length > 0.0)) continue;
        for (std::size_t k = 0; k < 3; ++k) normals[t + k] = static_cast<float>(n[k] / length);
    }
    mesh.triangleNormals = std::move(normals);
    return mesh.triangleNormals;
}

const char* typeName(const Geometry& geometry) noexcept {
    constexpr const char* kNames[] = {"mesh", "sphere", "cone"};
    return kNames[geometry.shape.index()];
}

std::string label(const Geometry& geometry) { return std::string(typeName(geometry)) + " '" + geometry.name + "'"; }

}  // namespace nemra::node
