#include "engine/core/geometry/mesh.h"

#include <algorithm>

namespace nemra::core {

namespace {

/// Whether the sides of a triangle span an area that is more than their rounding. `normal`: their cross product.
bool hasArea(const Vec3& e1, const Vec3& e2, const Vec3& normal) {
    const double longest = std::max({length(e1), length(e2), length(e2 - e1)});
    return length(normal) > 1.0e-12 * longest * longest;
}

Vec3 vertexOf(const node::Mesh& mesh, std::int32_t index) {
    const double* const v = mesh.vertices.data() + 3 * static_cast<std::size_t>(index);
    return {v[0], v[1], v[2]};
}

}  // namespace

std::vector<std::int32_t> usableTriangles(const node::Mesh& mesh, const std::string& label, Translation& translation) {
    const auto vertexCount = static_cast<std::int64_t>(mesh.vertices.size() / 3);
    std::vector<char> finite(vertexCount);
    for (std::int64_t i = 0; i < vertexCount; ++i) {
        const double* p = mesh.vertices.data() + 3 * i;
        // Beyond this size single precision overflows in products of lengths.
        finite[i] = std::abs(p[0]) < 1.0e12 && std::abs(p[1]) < 1.0e12 && std::abs(p[2]) < 1.0e12;
    }
    std::vector<std::int32_t> kept;
    kept.reserve(mesh.triangles.size());
    std::size_t outOfRange = 0;
    std::size_t notFinite = 0;
    std::size_t flat = 0;
    for (std::size_t i = 0; i + 2 < mesh.triangles.size(); i += 3) {
        const std::int32_t* t = mesh.triangles.data() + i;
        if (!std::all_of(t, t + 3, [&](std::int32_t v) { return v >= 0 && v < vertexCount; })) {
            ++outOfRange;
        } else if (!std::all_of(t, t + 3, [&](std::int32_t v) { return finite[v] != 0; })) {
            ++notFinite;
        } else {
            const Vec3 corner = vertexOf(mesh, t[0]);
            const Vec3 e1 = vertexOf(mesh, t[1]) - corner;
            const Vec3 e2 = vertexOf(mesh, t[2]) - corner;
            if (hasArea(e1, e2, cross(e1, e2))) {
                kept.insert(kept.end(), t, t + 3);
            } else {
                ++flat;
            }
        }
    }
    if (outOfRange) {
        translation.warn(label, std::to_string(outOfRange) + " triangles name vertices that don't exist (there are " +
                                    std::to_string(vertexCount) + "); they are left out");
    }
    if (notFinite) {
        translation.warn(label, std::to_string(notFinite) +
                                    " triangles have vertices that aren't finite or lie beyond 1e12 m; "
                                    "they are left out");
    }
    if (flat) translation.warn(label, std::to_string(flat) + " triangles have no area; they are left out");
    return kept;
}

float safeOffset(double magnitude) noexcept { return static_cast<float>(1.2e-6 * magnitude); }

PlacedMesh placeMesh(const node::Mesh& mesh, const std::vector<std::int32_t>& triangles, const Affine& placing) {
    PlacedMesh placed;
    placed.triangles.reserve(triangles.size() / 3);
    const Affine back = placing.inverse();
    const double side = placing.determinant() < 0.0 ? -1.0 : 1.0;
    const bool smooth = mesh.normals.size() >= mesh.vertices.size() && !mesh.normals.empty();
    for (std::size_t i = 0; i < triangles.size(); i += 3) {
        Vec3 p[3];
        for (int k = 0; k < 3; ++k) p[k] = placing.point(vertexOf(mesh, triangles[i + k]));
        const Vec3 e1 = p[1] - p[0];
        const Vec3 e2 = p[2] - p[0];
        const Vec3 n = cross(e1, e2) * side;
        const double twice = length(n);
        if (!hasArea(e1, e2, n) || !(twice > 1.0e-36)) {
            ++placed.flattened;
            continue;
        }
        TriangleRecord record{};
        double magnitude = 0.0;
        for (int k = 0; k < 3; ++k) {
            record.v0[k] = static_cast<float>(p[0][k]);
            record.e1[k] = static_cast<float>(e1[k]);
            record.e2[k] = static_cast<float>(e2[k]);
            record.ng[k] = static_cast<float>(n[k] / twice);
            for (const Vec3& q : p) magnitude = std::max(magnitude, std::abs(q[k]));
        }
        record.offset = safeOffset(magnitude);
        record.normals = -1;
        if (smooth) {
            NormalsRecord corners{};
            bool usable = true;
            for (int k = 0; k < 3; ++k) {
                const float* v = mesh.normals.data() + 3 * static_cast<std::size_t>(triangles[i + k]);
                const Vec3 own{v[0], v[1], v[2]};
                const Vec3 world = normalized(back.transposed(own));
                usable = usable && isFinite(own) && length(own) > 1.0e-6 && isFinite(world);
                for (int c = 0; c < 3; ++c) corners.n[k][c] = static_cast<float>(world[c]);
            }
            // Normals that just repeat the plane cost time and change nothing.
            const Vec3 flat = n * (1.0 / twice);
            double bend = 0.0;
            for (const auto& corner : corners.n)
                bend = std::max(bend, 1.0 - std::abs(dot(flat, {corner[0], corner[1], corner[2]})));
            if (usable && bend > 1.0e-6) {
                record.normals = static_cast<std::int32_t>(placed.normals.size());
                placed.normals.push_back(corners);
            }
        }
        placed.area += 0.5 * twice;
        placed.triangles.push_back(record);
    }
    return placed;
}

}  // namespace nemra::core
