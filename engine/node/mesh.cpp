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

template <class Number>
std::string findNotFinite(const std::vector<Number>& numbers, std::size_t width, const char* what) {
    const auto bad = std::find_if(numbers.begin(), numbers.end(), [](Number x) { return !(std::abs(x) <= kMaxCoordinate); });
    if (bad == numbers.end()) return {};
    const auto at = static_cast<std::size_t>(bad - numbers.begin());
    return std::string(what) + " " + std::to_string(at / width) + " has a component (" + std::to_string(at % width) +
           ") that is " + (std::isfinite(*bad) ? "larger than 1e18" : "not finite");
}

std::string findBadIndex(const Mesh& mesh) {
    const auto vertices = static_cast<std::int64_t>(mesh.vertices.size() / 3);
    const auto& indices = mesh.triangles;
    const auto bad = std::find_if(indices.begin(), indices.end(), [&](std::int32_t i) { return i < 0 || i >= vertices; });
    if (bad == indices.end()) return {};
    return "triangle " + std::to_string((bad - indices.begin()) / 3) + " refers to vertex " + std::to_string(*bad) +
           ", the mesh has " + std::to_string(vertices) + " vertices";
}

}  // namespace

std::string whyRefused(const Mesh& mesh) {
    const auto count = [](const char* what, std::size_t is) { return std::to_string(is) + " numbers for the " + what; };
    if (!mesh.file.path.empty() && !(mesh.vertices.empty() && mesh.normals.empty() && mesh.uvs.empty() && mesh.triangles.empty()))
        return "it names a file and has arrays of its own";
    if (mesh.vertices.size() % 3 != 0) return count("vertices", mesh.vertices.size()) + ", not a multiple of 3";
    if (mesh.triangles.size() % 3 != 0) return count("triangles", mesh.triangles.size()) + ", not a multiple of 3";
    const std::size_t vertices = mesh.vertices.size() / 3;
    if (!mesh.normals.empty() && mesh.normals.size() != 3 * vertices)
        return count("normals", mesh.normals.size()) + ", expected " + std::to_string(3 * vertices);
    if (!mesh.uvs.empty() && mesh.uvs.size() != 2 * vertices)
        return count("uvs", mesh.uvs.size()) + ", expected " + std::to_string(2 * vertices);
    std::string why = findBadIndex(mesh);
    if (why.empty()) why = findNotFinite(mesh.vertices, 3, "vertex");
    if (why.empty()) why = findNotFinite(mesh.normals, 3, "normal");
    if (why.empty()) why = findNotFinite(mesh.uvs, 2, "uv");
    return why;
}

std::string whyRefused(const Sphere& sphere) {
    return sphere.radius > 0.0F && sphere.radius <= static_cast<float>(kMaxCoordinate)
               ? ""
               : "the radius must be finite and above zero";
}

std::string whyRefused(const Cone& cone) {
    return cone.topRadius >= 0.0F && cone.topRadius <= static_cast<float>(kMaxCoordinate)
               ? ""
               : "the top radius must be finite and not below zero";
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

const std::vector<float>& triangleNormals(const Mesh& mesh) {
    if (mesh.triangleNormals.size() == mesh.triangles.size()) return mesh.triangleNormals;
    std::vector<float> normals(mesh.triangles.size(), 0.0F);
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
