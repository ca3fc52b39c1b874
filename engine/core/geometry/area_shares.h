/// Picking triangles of a mesh in proportion to their areas.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/core/kernel/kernel_scene.h"

namespace nemra::core {

/// Shares are whole numbers of 2^-32, so that the chance stated is the chance taken; none is 0. Four bytes for each triangle.
class AreaShares {
public:
    AreaShares() = default;
    explicit AreaShares(const std::vector<TriangleRecord>& triangles);

    bool empty() const noexcept { return from_.empty(); }
    std::size_t size() const noexcept { return from_.size(); }
    /// The triangle that a number takes; numbers are uniform over all of 32 bits.
    std::uint32_t pick(std::uint32_t number) const noexcept;
    /// The chance of a triangle.
    double chance(std::uint32_t triangle) const noexcept;

private:
    std::vector<std::uint32_t> from_;  ///< the first number of each triangle
};

/// Area of a triangle, m2.
double areaOf(const TriangleRecord& triangle) noexcept;

}  // namespace nemra::core
