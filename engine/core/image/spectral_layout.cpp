#include "engine/core/image/spectral_layout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace nemra::core {

namespace {

constexpr double kSpeedOfLight = 299792458.0;  // m/s, exact

/// The number at the front of a text, which it then lacks.
std::optional<double> takeNumber(std::string_view& text) {
    std::string digits(text.substr(0, 64));
    std::replace(digits.begin(), digits.end(), ',', '.');
    double number = 0.0;
    const auto [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (fault != std::errc() || !(number > 0.0) || !std::isfinite(number)) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - digits.data()));
    return number;
}

double prefixFactor(std::string_view prefix) {
    constexpr std::array<std::pair<std::string_view, double>, 17> factors{{{"", 1.0},
                                                                           {"Y", 1e24},
                                                                           {"Z", 1e21},
                                                                           {"E", 1e18},
                                                                           {"P", 1e15},
                                                                           {"T", 1e12},
                                                                           {"G", 1e9},
                                                                           {"M", 1e6},
                                                                           {"k", 1e3},
                                                                           {"h", 1e2},
                                                                           {"da", 1e1},
                                                                           {"d", 1e-1},
                                                                           {"c", 1e-2},
                                                                           {"m", 1e-3},
                                                                           {"u", 1e-6},
                                                                           {"n", 1e-9},
                                                                           {"p", 1e-12}}};
    const auto found = std::find_if(factors.begin(), factors.end(), [&](const auto& f) { return f.first == prefix; });
    return found == factors.end() ? 0.0 : found->second;
}

/// In m, of a length or a frequency such as "550,5nm".
std::optional<double> parseWavelength(std::string_view text) {
    auto number = takeNumber(text);
    if (!number) return std::nullopt;
    const bool frequency = text.ends_with("Hz");
    if (!frequency && !text.ends_with("m")) return std::nullopt;
    const double unit = prefixFactor(text.substr(0, text.size() - (frequency ? 2 : 1)));
    if (unit == 0.0) return std::nullopt;
    const double wavelength = frequency ? kSpeedOfLight / (*number * unit) : *number * unit;
    return std::isfinite(wavelength) && wavelength > 0.0 ? std::optional(wavelength) : std::nullopt;
}

}  // namespace

std::optional<LayoutChannel> parseLayoutChannel(std::string_view name) {
    const auto dot = name.find('.');
    if (dot == std::string_view::npos) return std::nullopt;
    const std::string_view head = name.substr(0, dot);
    std::string_view rest = name.substr(dot + 1);
    const bool stokes = head.size() == 2 && head[0] == 'S' && head[1] >= '0' && head[1] <= '3';
    if (!stokes && head != "T") return std::nullopt;
    if (const auto second = rest.find('.'); !stokes && second != std::string_view::npos) {
        const auto from = parseWavelength(rest.substr(0, second));
        if (!from || !parseWavelength(rest.substr(second + 1))) return std::nullopt;
        return LayoutChannel{LayoutChannel::Kind::other, *from};
    }
    const auto wavelength = parseWavelength(rest);
    if (!wavelength) return std::nullopt;
    if (stokes && head != "S0") return LayoutChannel{LayoutChannel::Kind::other, *wavelength};
    return LayoutChannel{stokes ? LayoutChannel::Kind::emissive : LayoutChannel::Kind::reflective, *wavelength};
}

std::vector<BandLimits> parseBandLimits(std::string_view text) {
    std::vector<BandLimits> limits;
    while (!text.empty()) {
        const auto end = std::min(text.find(';'), text.size());
        const std::string_view pair = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const auto colon = pair.find(':');
        if (colon == std::string_view::npos) continue;
        const auto first = parseWavelength(pair.substr(0, colon));
        const auto last = parseWavelength(pair.substr(colon + 1));
        if (first && last && *first < *last) limits.push_back({*first, *last});
    }
    return limits;
}

}  // namespace nemra::core
