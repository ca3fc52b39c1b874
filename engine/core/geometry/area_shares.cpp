#include "engine/core/geometry/area_shares.h"

#include <algorithm>

#include "engine/core/geometry/affine.h"

namespace nemra::core {

double areaOf(const TriangleRecord& t) noexcept {
    return 0.5 * length(cross({t.e1[0], t.e1[1], t.e1[2]}, {t.e2[0], t.e2[1], t.e2[2]}));
}

AreaShares::AreaShares(const std::vector<TriangleRecord>& triangles) {
    double total = 0.0;
    for (const TriangleRecord& t : triangles) total += areaOf(t);
    const double numbers = 0x1p32 - static_cast<double>(triangles.size());  // beyond one for each
    double sum = 0.0;
    from_.reserve(triangles.size());
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        from_.push_back(static_cast<std::uint32_t>(i) + static_cast<std::uint32_t>(std::min(1.0, sum / total) * numbers));
        sum += areaOf(triangles[i]);
    }
}

std::uint32_t AreaShares::pick(std::uint32_t number) const noexcept {
    return static_cast<std::uint32_t>(std::upper_bound(from_.begin(), from_.end(), number) - from_.begin() - 1);
}

double AreaShares::chance(std::uint32_t triangle) const noexcept {
    const double next = triangle + 1 < from_.size() ? from_[triangle + 1] : 0x1p32;
    return (next - from_[triangle]) * 0x1p-32;
}

}  // namespace nemra::core
