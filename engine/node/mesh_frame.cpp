#include "engine/node/mesh_frame.h"

#include <algorithm>
#include <iterator>

namespace nemra::node {

namespace {

struct UnitEntry {
    std::string_view name;
    double metres;
};

// In the order of LengthUnit; the inch and the foot are the international ones of 1959.
constexpr UnitEntry kUnits[] = {{"", 1.0},  {"mm", 1.0e-3}, {"cm", 1.0e-2}, {"dm", 1.0e-1},
                                {"m", 1.0}, {"km", 1.0e3},  {"in", 0.0254}, {"ft", 0.3048}};
constexpr std::string_view kUps[] = {"", "y", "z"};

}  // namespace

std::string_view nameOf(LengthUnit unit) noexcept { return kUnits[static_cast<std::size_t>(unit)].name; }
std::string_view nameOf(UpAxis up) noexcept { return kUps[static_cast<std::size_t>(up)]; }

std::string setUnit(MeshFrame& frame, std::string_view name) {
    const auto* const found =
        std::find_if(std::begin(kUnits), std::end(kUnits), [&](const auto& unit) { return unit.name == name; });
    if (found == std::end(kUnits)) return "unknown unit '" + std::string(name) + "': mm, cm, dm, m, km, in or ft expected";
    frame.unit = static_cast<LengthUnit>(found - kUnits);
    return {};
}

std::string setUp(MeshFrame& frame, std::string_view name) {
    const auto* const found = std::find(std::begin(kUps), std::end(kUps), name);
    if (found == std::end(kUps)) return "unknown axis '" + std::string(name) + "' for up: y or z expected";
    frame.up = static_cast<UpAxis>(found - kUps);
    return {};
}

FrameChange changeOf(const MeshFrame& frame) noexcept {
    const double scale = kUnits[static_cast<std::size_t>(frame.unit)].metres;
    if (frame.up == UpAxis::z) return {{1, 0, 0, 0, 0, 1, 0, -1, 0}, scale};  // z becomes y, y becomes -z
    return {{1, 0, 0, 0, 1, 0, 0, 0, 1}, scale};
}

}  // namespace nemra::node
