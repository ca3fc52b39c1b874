#include "engine/node/import/triangulate.h"

#include <array>
#include <cmath>

namespace nemra::node {

namespace {

struct Point {
    double x, y;
};

/// Twice the area of a b c, above zero if they turn to the left.
double turn(const Point& a, const Point& b, const Point& c) { return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x); }

/// The corners in the plane of the two axes that the polygon's mean normal (Newell) is farthest from, turning to the left.
std::vector<Point> flattened(std::span<const double> vertices, std::span<const std::int32_t> corners) {
    const auto at = [&](std::size_t corner) { return vertices.data() + 3 * static_cast<std::size_t>(corners[corner]); };
    std::array<double, 3> normal{};
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const double* const p = at(i);
        const double* const q = at((i + 1) % corners.size());
        for (std::size_t k = 0; k < 3; ++k) {
            const std::size_t u = (k + 1) % 3;
            const std::size_t v = (k + 2) % 3;
            normal[k] += (p[u] - q[u]) * (p[v] + q[v]);
        }
    }
    std::size_t along = 2;
    for (std::size_t k = 0; k < 2; ++k)
        if (std::abs(normal[k]) > std::abs(normal[along])) along = k;
    const std::size_t u = (along + 1) % 3;
    const std::size_t v = (along + 2) % 3;
    std::vector<Point> points;
    for (std::size_t i = 0; i < corners.size(); ++i)
        points.push_back(normal[along] < 0.0 ? Point{at(i)[v], at(i)[u]} : Point{at(i)[u], at(i)[v]});
    return points;
}

/// Whether the corner at `here` sticks out and no other corner lies in the triangle that it makes with its neighbours.
bool isEar(const std::vector<Point>& points, const std::vector<std::size_t>& left, std::size_t here) {
    const std::size_t count = left.size();
    const Point& a = points[left[(here + count - 1) % count]];
    const Point& b = points[left[here]];
    const Point& c = points[left[(here + 1) % count]];
    if (!(turn(a, b, c) > 0.0)) return false;
    for (std::size_t i = 2; i + 1 < count; ++i) {
        const Point& p = points[left[(here + i) % count]];
        const bool isCorner = (p.x == a.x && p.y == a.y) || (p.x == b.x && p.y == b.y) || (p.x == c.x && p.y == c.y);
        if (!isCorner && turn(a, b, p) >= 0.0 && turn(b, c, p) >= 0.0 && turn(c, a, p) >= 0.0) return false;
    }
    return true;
}

}  // namespace

void triangulate(std::span<const double> vertices, std::span<const std::int32_t> corners, LargeVector<std::int32_t>& triangles) {
    if (corners.size() < 3) return;
    if (corners.size() == 3) {
        triangles.insert(triangles.end(), corners.begin(), corners.end());
        return;
    }
    const std::vector<Point> points = flattened(vertices, corners);
    std::vector<std::size_t> left(corners.size());
    for (std::size_t i = 0; i < left.size(); ++i) left[i] = i;
    std::size_t here = 0;
    std::size_t tried = 0;
    // A polygon that crosses itself runs out of ears; then any corner will do.
    while (left.size() > 3) {
        here %= left.size();
        if (tried < left.size() && !isEar(points, left, here)) {
            ++here;
            ++tried;
            continue;
        }
        const std::size_t count = left.size();
        for (const std::size_t corner : {left[(here + count - 1) % count], left[here], left[(here + 1) % count]})
            triangles.push_back(corners[corner]);
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(here));
        tried = tried < count ? 0 : count;  // out of ears once, out of them for good
    }
    for (const std::size_t corner : left) triangles.push_back(corners[corner]);
}

}  // namespace nemra::node
