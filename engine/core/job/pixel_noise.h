/// The noise of single pixels.
#pragma once

#include <cstddef>

#include "engine/core/job/shared_film.h"
#include "engine/core/result/light_view.h"

namespace nemra::core {

/// Of what stands for a pixel: luminance, energy or the mean of the channels.
struct PixelNoise {
    double samples;
    double mean;
    double variance;  ///< of a sample (n - 1)
};

/// `reference` as referenceChannel gives it. A pixel of fewer than two samples counts as black.
PixelNoise pixelNoise(const Film& film, std::size_t pixel, int reference);

/// Calls look(film, pixel, reference, x, y) for each pixel, tile by tile, with the tile's lock.
template <class Look>
void eachPixel(const SharedFilm& shared, Look&& look) {
    shared.eachTile([&](const Film& film, const PreparedScene::Tile& tile) {
        const int reference = referenceChannel(film);
        for (int x = tile.x0; x < tile.x1; ++x) {
            for (int y = tile.y0; y < tile.y1; ++y) look(film, film.pixel(x, y), reference, x, y);
        }
    });
}

}  // namespace nemra::core
