/// The named colour spaces. All tristimulus values are for the CIE 1931 2 degree observer with Y = 1 for the white of the space.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "engine/node/value.h"

namespace nemra::node {

using Xyz = std::array<double, 3>;

struct ColorSpace {
    std::string_view name;
    std::string_view doc;
    Xyz (*toXyz)(const std::array<double, 3>& coords);
    std::array<double, 3> (*fromXyz)(const Xyz& xyz);
};

/// The spaces; a space's number is its place here. White of all of them is D65 (x = 0.3127, y = 0.3290).
NEMRA_API std::span<const ColorSpace> colorSpaces() noexcept;
/// Number of the space of that name, or empty.
NEMRA_API std::optional<std::int32_t> findColorSpace(std::string_view name) noexcept;
/// Their names with commas between, for messages.
NEMRA_API std::string colorSpaceNames();

/// Empty if the colour's space isn't known.
NEMRA_API std::optional<Xyz> toXyz(const Color& color) noexcept;
/// The same colour in another space, not clipped; empty if one of the two spaces isn't known.
NEMRA_API std::optional<Color> convert(const Color& color, std::string_view space);

}  // namespace nemra::node
