/// The names that the spectral layout of OpenEXR gives to channels.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nemra::core {

struct LayoutChannel {
    enum class Kind { emissive, reflective, other } kind;  ///< other: a Stokes component beside S0, re-radiation
    double wavelength;                                     ///< m, centre of the band; the first of a re-radiation
};

/// None for a name that isn't of the layout: (S0...S3 or T) "." number with a decimal comma, SI prefix, "m" or "Hz".
std::optional<LayoutChannel> parseLayoutChannel(std::string_view name);

/// A band's ends in m.
struct BandLimits {
    double first, last;
};
/// "545.0nm:555.0nm;...": our own attribute; what isn't of that form is left out.
std::vector<BandLimits> parseBandLimits(std::string_view text);

}  // namespace nemra::core
