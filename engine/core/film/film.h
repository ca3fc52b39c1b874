/// What a sensor collects: sums of samples per pixel and channel that don't depend on the order of adding.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/core/film/square_sums.h"

namespace nemra::core {

enum class ChannelKind { unknown, energy, luminous, spectral };

struct Channel {
    std::string name;  ///< "X", "Y", "Z"; "E"; "550 nm"
    ChannelKind kind = ChannelKind::unknown;
    double wavelength = 0.0;  ///< m, centre of a spectral channel, else 0
    double bandwidth = 0.0;   ///< m, of a spectral channel, else 0
    std::string unit;         ///< of the channel's values, e.g. "W.m^-2.sr^-1.nm^-1", "cd.m^-2"
};

/// Sums over samples, in memory order x, then y, then channel (channel fastest), as a reader of pixels walks it.
/// A value is (high + low) / samples. `high` holds multiples of a quantum fixed for the render and `low` what is left, itself
/// a multiple of a finer quantum, so that both sums are exact and any order of adding gives the same bits
/// (pre-rounded summation: Demmel and Nguyen, "Parallel Reproducible Summation", IEEE Trans. Computers 64(7), 2015). The same
/// holds of all other arrays.
///
/// A film may be a cut-out of a larger image: its pixels are then those from (left, top) on.
struct Film {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    std::vector<Channel> channels;
    std::vector<double> high;
    std::vector<double> low;
    std::vector<std::uint32_t> samples;  ///< per pixel, x-major
    SquareSums squares;                  ///< per pixel, of the sample's luminance (or energy, or band mean)
    /// Per pixel, sum over samples of the distance to the first surface, m, in multiples of a quantum; escaped rays add none.
    std::vector<double> depth;
    std::vector<std::uint32_t> depthSamples;  ///< per pixel, samples whose first ray met a surface

    /// Counted from the film's own first pixel.
    std::size_t pixel(int x, int y) const noexcept { return static_cast<std::size_t>(x) * height + y; }
    std::size_t cell(int x, int y, int channel) const noexcept { return pixel(x, y) * channels.size() + channel; }
};

}  // namespace nemra::core
