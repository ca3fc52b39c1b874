#include "engine/core/glare/join_pixels.h"

#include <cmath>
#include <numbers>
#include <unordered_map>

namespace nemra::core {

namespace {

/// Disjoint sets of pixels.
class Sets {
public:
    explicit Sets(std::size_t count) : parent_(count) {
        for (std::size_t i = 0; i < count; ++i) parent_[i] = static_cast<std::uint32_t>(i);
    }
    std::size_t find(std::size_t item) {
        while (parent_[item] != item) {
            parent_[item] = parent_[parent_[item]];
            item = parent_[item];
        }
        return item;
    }
    void join(std::size_t a, std::size_t b) {
        a = find(a);
        b = find(b);
        if (a < b) parent_[b] = static_cast<std::uint32_t>(a);
        if (b < a) parent_[a] = static_cast<std::uint32_t>(b);
    }

private:
    std::vector<std::uint32_t> parent_;
};

void joinNeighbours(const VisualField& field, const std::vector<char>& marked, Sets& sets) {
    for (int y = 0; y < field.height; ++y) {
        for (int x = 0; x < field.width; ++x) {
            const std::size_t pixel = field.pixel(x, y);
            if (!marked[pixel]) continue;
            if (x + 1 < field.width && marked[pixel + 1]) sets.join(pixel, pixel + 1);
            if (y + 1 == field.height) continue;
            for (int u = std::max(0, x - 1); u <= std::min(field.width - 1, x + 1); ++u) {
                if (marked[field.pixel(u, y + 1)]) sets.join(pixel, field.pixel(u, y + 1));
            }
        }
    }
}

/// Of a group, only pixels at its edge can be the nearest to another one.
bool isAtEdge(const VisualField& field, const std::vector<char>& marked, int x, int y) {
    if (x == 0 || y == 0 || x + 1 == field.width || y + 1 == field.height) return true;
    const std::size_t pixel = field.pixel(x, y);
    const auto row = static_cast<std::size_t>(field.width);
    return !marked[pixel - 1] || !marked[pixel + 1] || !marked[pixel - row] || !marked[pixel + row];
}

/// Pixels in a cube of a grid over the unit sphere.
struct Cell {
    int x, y, z;
    bool operator==(const Cell&) const = default;
};
struct CellHash {
    std::size_t operator()(const Cell& c) const noexcept {
        return std::size_t(std::uint32_t(c.x) * 73856093U ^ std::uint32_t(c.y) * 19349663U ^ std::uint32_t(c.z) * 83492791U);
    }
};
using Grid = std::unordered_map<Cell, std::vector<std::size_t>, CellHash>;

void joinCells(const VisualField& field, const std::vector<std::size_t>& a, const std::vector<std::size_t>& b, double chord,
               Sets& sets) {
    for (const std::size_t p : a) {
        const Vec3 from = field.directionOf(p);
        for (const std::size_t q : b) {
            if (sets.find(p) == sets.find(q)) return;  // the pixels of one cell are in one set by now
            const Vec3 between = from - field.directionOf(q);
            if (dot(between, between) <= chord * chord) return sets.join(p, q);
        }
    }
}

void joinWithin(const VisualField& field, const std::vector<char>& marked, double angle, Sets& sets) {
    const double chord = 2.0 * std::sin(0.5 * std::min(angle, std::numbers::pi));
    // The diagonal of a cell is the chord, so that all in one cell belong together and others lie at most two cells off.
    const double side = chord / std::sqrt(3.0);
    Grid grid;
    for (int y = 0; y < field.height; ++y) {
        for (int x = 0; x < field.width; ++x) {
            const std::size_t pixel = field.pixel(x, y);
            if (!marked[pixel] || !isAtEdge(field, marked, x, y)) continue;
            const Vec3 d = field.directionOf(pixel);
            const auto index = [&](double v) { return static_cast<int>(std::floor(v / side)); };
            auto& cell = grid[{index(d[0]), index(d[1]), index(d[2])}];
            if (!cell.empty()) sets.join(cell.front(), pixel);
            cell.push_back(pixel);
        }
    }
    for (const auto& [place, pixels] : grid) {
        for (int i = 0; i < 125; ++i) {
            const Cell other{place.x + i % 5 - 2, place.y + i / 5 % 5 - 2, place.z + i / 25 - 2};
            const auto found = grid.find(other);
            if (found == grid.end() || found->first == place) continue;
            if (sets.find(pixels.front()) != sets.find(found->second.front())) {
                joinCells(field, pixels, found->second, chord, sets);
            }
        }
    }
}

}  // namespace

JoinedPixels joinPixels(const VisualField& field, const std::vector<char>& marked, double angle) {
    Sets sets(marked.size());
    joinNeighbours(field, marked, sets);
    constexpr double kLeastAngle = 1.0e-6;  // below any pixel; finer cells would overflow their numbers
    if (angle >= kLeastAngle) joinWithin(field, marked, angle, sets);
    JoinedPixels joined;
    joined.group.assign(marked.size(), -1);
    for (std::size_t pixel = 0; pixel < marked.size(); ++pixel) {
        if (!marked[pixel]) continue;
        const std::size_t first = sets.find(pixel);  // the least pixel of its set, so it has its number already
        joined.group[pixel] = first == pixel ? joined.count++ : joined.group[first];
    }
    return joined;
}

}  // namespace nemra::core
