/// How many samples the parts of a picture should get.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/core/job/shared_film.h"

namespace nemra::core {

/// Adaptive sampling: where a picture is noisy it gets more samples than where it isn't. If the number of a pixel's samples
/// depended on the samples themselves, its mean would come out wrong: a bright sample early on calls for more, which then dilute
/// it (Kirk and Arvo, "Unbiased sampling techniques for image synthesis", SIGGRAPH 1991). So all pixels first get a pilot, and
/// once for all the tiles of each colour of a chessboard get their shares by the pilots of the other colour's tiles: those at
/// their four sides. Samples of different pixels are independent, so the mean of every pixel stays exactly unbiased.
inline constexpr std::uint32_t kPilotSamples = 32;

/// Small, since what decides about a tile lies beside it.
inline constexpr int kAdaptiveTile = 4;  ///< pixels

/// Samples of each pixel that a piece has at least: one of a few samples only would cost as much as its rendering.
inline constexpr std::uint32_t kAdaptivePiece = 8;

/// Shares of the tiles in the samples behind the pilot, by a film that has the pilot of all pixels and nothing else: in
/// proportion to the tile's relative standard deviation (Neyman, "On the two different aspects of the representative method", J.
/// Royal Statistical Society 97, 1934), from 1/4 to 8. Their mean over the pixels of each colour is 1.
///
/// A deviation is relative to the pixel's mean, which is itself uncertain: a dark pixel that no bright sample has met yet would
/// seem to have little of both. So means are shrunk towards that of their tile, by as much as their spread in the tile is that of
/// noise (Efron and Morris, "Stein's estimation rule and its competitors", J. American Statistical Association 68, 1973).
std::vector<double> adaptiveShares(const SharedFilm& film);

/// Whether adaptiveShares can have given that number.
bool isShare(double share) noexcept;

}  // namespace nemra::core
