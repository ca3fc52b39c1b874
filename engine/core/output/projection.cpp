#include "engine/core/output/projection.h"

#include <cmath>
#include <map>
#include <string>

namespace nemra::core {

namespace {

using Projections = std::map<std::string, MakeProjection, std::less<>>;

Projections& projections() {
    static Projections known;
    return known;
}

/// Solid angle of a triangle of unit vectors (Van Oosterom and Strackee, "The Solid Angle of a Plane Triangle", IEEE Trans.
/// Biomedical Engineering 30(2), 1983).
double triangle(const Vec3& a, const Vec3& b, const Vec3& c) {
    // From the edges, since the product of nearly equal vectors would lose the digits of small triangles.
    const double volume = std::abs(dot(a, cross(b - a, c - a)));
    return 2.0 * std::atan2(volume, 1.0 + dot(a, b) + dot(b, c) + dot(c, a));
}

std::optional<double> quadrilateral(const Projection& projection, double x, double y, double side) {
    const auto a = projection.direction(x, y);
    const auto b = projection.direction(x + side, y);
    const auto c = projection.direction(x + side, y + side);
    const auto d = projection.direction(x, y + side);
    if (!a || !b || !c || !d) return std::nullopt;
    return triangle(*a, *b, *c) + triangle(*a, *c, *d);
}

}  // namespace

bool addProjection(std::string_view type, MakeProjection make) { return projections().emplace(type, make).second; }

std::unique_ptr<Projection> projectionOf(const Raw& raw) {
    const auto instrument = raw.instrument();
    if (!instrument) return nullptr;
    const auto found = projections().find(instrument->type());
    return found == projections().end() ? nullptr : found->second(*instrument, raw.width(), raw.height());
}

double solidAngle(const Projection& projection, int x, int y) {
    if (const auto whole = quadrilateral(projection, x, y, 1.0)) return *whole;
    constexpr int kParts = 8;
    double sum = 0.0;
    for (int i = 0; i < kParts; ++i) {
        for (int j = 0; j < kParts; ++j) {
            sum += quadrilateral(projection, x + double(i) / kParts, y + double(j) / kParts, 1.0 / kParts).value_or(0.0);
        }
    }
    return sum;
}

double pixelAngle(const Projection& projection, int width, int height) {
    return std::sqrt(solidAngle(projection, width / 2, height / 2));
}

}  // namespace nemra::core
