#include "engine/core/glare/position_index.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "engine/core/data/tables.h"

namespace nemra::core {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

/// Where a ratio lies between two lines of the table.
struct Place {
    int line;
    double part;
};

Place placeOf(double ratio, int lines) {
    const double at = ratio / data::kGuthStep;
    const double nearest = std::round(at);
    if (std::abs(at - nearest) < 1.0e-9) return {static_cast<int>(nearest), 0.0};
    return {std::min(static_cast<int>(at), lines - 2), at - std::min(static_cast<int>(at), lines - 2)};
}

}  // namespace

PositionIndex tableIndex(const Vec3& direction, double radius) {
    if (!(direction[2] > 0.0)) return {std::nullopt, "behind the eye"};
    double up = direction[1];
    if (up < 0.0) {
        if (std::asin(-up) > radius) return {std::nullopt, "below the line of sight"};
        up = 0.0;
    }
    const double across = std::abs(direction[0]) / direction[2];
    const double above = up / direction[2];
    constexpr double kSlack = 1.0e-9;
    if (across > (data::kGuthRows - 1) * data::kGuthStep + kSlack) return {std::nullopt, "T/R beyond 3"};
    if (above > (data::kGuthColumns - 1) * data::kGuthStep + kSlack) return {std::nullopt, "H/R beyond 1.9"};
    const Place row = placeOf(across, data::kGuthRows);
    const Place column = placeOf(above, data::kGuthColumns);
    double index = 0.0;
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 2; ++j) {
            const double weight = (i ? row.part : 1.0 - row.part) * (j ? column.part : 1.0 - column.part);
            if (weight == 0.0) continue;
            const double entry = data::kGuthIndex[row.line + i][column.line + j];
            if (entry == 0.0) return {std::nullopt, "hidden by the brow"};
            index += weight * entry;
        }
    }
    return {index, ""};
}

PositionIndex formulaIndex(const Vec3& direction) {
    if (!(direction[2] > 0.0)) return {std::nullopt, "behind the eye"};
    const double off = std::hypot(direction[0], direction[1]);
    if (direction[1] < 0.0) {
        const double r = std::min(3.0, off / direction[2]);
        return {1.0 + (r > 0.6 ? 1.2 : 0.8) * r, ""};
    }
    const double s = std::atan2(off, direction[2]) / kDegree;
    const double t = std::atan2(std::abs(direction[0]), direction[1]) / kDegree;
    const double linear = (35.2 - 0.31889 * t - 1.22 * std::exp(-2.0 * t / 9.0)) * 1.0e-3;
    const double square = (21.0 + 0.26667 * t - 0.002963 * t * t) * 1.0e-5;
    return {std::exp(linear * s + square * s * s), ""};
}

}  // namespace nemra::core
