/// From the numbers of a picture to a result.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/core/output/color_space.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

/// Pixels of a picture: rows from the top, pixels from the left, channels innermost.
struct Pixels {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<float> values;
    bool encoded = false;              ///< code values of a display in [0, 1], not proportional to light
    std::optional<ColorSpace> colors;  ///< what the file says of R, G, B
    double luminanceOfWhite = 1.0;     ///< cd/m2 of R = G = B = 1
    int steps = 0;                     ///< all values are multiples of 1 / steps from 0 to 1; 0: they are any

    const float* at(int x, int y) const noexcept {
        return values.data() + (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) *
                                   static_cast<std::size_t>(channels);
    }
};

/// Why no result comes of a file; what() is for a message.
class PictureFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws a PictureFault, before anything is allocated, if a result of that size would have an array above kMaxBufferBytes, or if
/// it takes more than 16 MiB and the file can't mean it seriously: `plausiblePixels` is what a file of its size can hold at most.
void checkPictureSize(long long width, long long height, std::size_t channels, std::uint64_t plausiblePixels);

/// An empty film in which each pixel has one sample. The size must have been checked.
std::shared_ptr<Film> makePictureFilm(int width, int height, std::vector<Channel> channels);

/// The value of a cell of such a film; what isn't finite becomes 0.
void setCell(Film& film, int x, int y, int channel, double value) noexcept;
/// Fills in what is derived from the values, once all are set.
void finishPictureFilm(Film& film);

/// Channels X, Y, Z (cd/m2), named as sensors name them.
std::vector<Channel> tristimulusChannels();
/// Channel "A": opacity from 0 to 1.
Channel alphaChannel();
/// A spectral channel as the spectralbox sensor names it. Lengths in m.
Channel bandChannel(double wavelength, double bandwidth, std::string unit);
/// Widths of bands of which only the centres are known, which ascend: up to the middles between neighbours, the outer ones as
/// wide as their inner halves say; 1 nm for a band alone.
std::vector<double> bandwidthsBetween(const std::vector<double>& centres);

/// X, Y, Z of grey or coloured pixels in that colour space, times `scale`; a second or fourth channel becomes A.
std::shared_ptr<Film> tristimulusFilm(const Pixels& pixels, const ColorSpace& space, bool encoded, double scale);

}  // namespace nemra::core
