/// Unit and axes of a file of meshes, and the way from there into the engine's world: right-handed, metres, +Y up.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "module/flat/nemra_types.h"

namespace nemra::node {

/// Unset: what the format says, else metres.
enum class LengthUnit : std::uint8_t { unset, mm, cm, dm, m, km, in, ft };
/// The axis that points up in the file. Unset: what the format says, else +Y, which leaves coordinates as they stand.
enum class UpAxis : std::uint8_t { unset, y, z };

struct MeshFrame {
    LengthUnit unit = LengthUnit::unset;
    UpAxis up = UpAxis::unset;

    bool operator==(const MeshFrame&) const = default;
};

/// "mm", "y", ...; "" where it is unset.
NEMRA_API std::string_view nameOf(LengthUnit unit) noexcept;
NEMRA_API std::string_view nameOf(UpAxis up) noexcept;

/// Sets the one of that name; "" leaves it unset. The answer is empty, or says why there is no such one.
NEMRA_API std::string setUnit(MeshFrame& frame, std::string_view name);
NEMRA_API std::string setUp(MeshFrame& frame, std::string_view name);

/// From coordinates of the file to those of the engine: a rotation (row-major) and then a scale.
struct FrameChange {
    std::array<double, 9> rotation;
    double scale;
};
NEMRA_API FrameChange changeOf(const MeshFrame& frame) noexcept;

}  // namespace nemra::node
