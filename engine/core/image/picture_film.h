/// From the numbers of a picture to a result.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/core/result/raw.h"

namespace nemra::core {

/// Why no result comes of a file; what() is for a message.
class PictureFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws a PictureFault, before anything is allocated, if a result of that size would have an array above kMaxBufferBytes, or if
/// it takes more than 16 MiB and the file can't mean it seriously: `plausiblePixels` is what a file of its size can hold at most.
void checkPictureSize(long long width, long long height, std::size_t channels, std::uint64_t plausiblePixels);

/// A film of zeros without samples, of which what isn't written takes no memory yet if it is large. The size must have been
/// checked.
std::shared_ptr<Film> makePictureFilm(int width, int height, std::vector<Channel> channels);

/// Fills such a film, in which each pixel then has one sample.
class PictureWriter {
public:
    explicit PictureWriter(Film& film) : film_(film), reference_(referenceChannel(film)) {}

    /// The values, channels innermost, of `count` pixels of a column from row y on; what isn't finite becomes 0. Several threads
    /// may write different pixels at the same time.
    void put(int x, int y, int count, const double* values) const noexcept;

private:
    Film& film_;
    const int reference_;
};

/// Channels X, Y, Z (cd/m2), named as sensors name them.
std::vector<Channel> tristimulusChannels();
/// Channel "A": opacity from 0 to 1.
Channel alphaChannel();
/// A spectral channel as the spectralbox sensor names it. Lengths in m.
Channel bandChannel(double wavelength, double bandwidth, std::string unit);
/// Widths of bands of which only the centres are known, which ascend: up to the middles between neighbours, the outer ones as
/// wide as their inner halves say; 1 nm for a band alone.
std::vector<double> bandwidthsBetween(const std::vector<double>& centres);

}  // namespace nemra::core
