#include "engine/core/job/adaptive.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "engine/core/job/pixel_noise.h"

namespace nemra::core {

namespace {

constexpr double kLeast = 0.25;
constexpr double kMost = 8.0;
constexpr double kFaintest = 1.0e-3;  // of the noisiest tile
constexpr double kFloor = 0.01;       // of the picture's mean, so that black pixels don't get everything

/// Sums over the pixels of a tile.
struct Sums {
    double pixels = 0.0;
    double means = 0.0;
    double errors = 0.0;   ///< squares of the means' standard errors
    double spread = 0.0;   ///< squares of what the means differ by from the tile's
    double squares = 0.0;  ///< of relative standard deviations

    double mean() const noexcept { return means / pixels; }
    /// A pixel's mean as its neighbours in the tile let it appear: nearer to the tile's, the more the spread of the means is that
    /// of noise alone.
    double shrunk(double mean) const noexcept {
        const double noise = spread > 0.0 ? errors / pixels / (spread / (pixels - 1.0)) : 1.0;
        return this->mean() + std::max(0.0, 1.0 - noise) * (mean - this->mean());
    }
};

std::size_t colorOf(const TileGrid& grid, std::size_t tile) { return (tile % grid.columns() + tile / grid.columns()) % 2; }

std::vector<std::size_t> neighbours(const TileGrid& grid, std::size_t tile) {
    const std::size_t column = tile % grid.columns();
    std::vector<std::size_t> found;
    if (column > 0) found.push_back(tile - 1);
    if (column + 1 < grid.columns()) found.push_back(tile + 1);
    if (tile >= grid.columns()) found.push_back(tile - grid.columns());
    if (tile + grid.columns() < grid.count()) found.push_back(tile + grid.columns());
    return found;
}

/// Numbers in proportion to `wishes`, kept between kLeast and kMost, with the mean 1; `weights` sum up to 1.
std::vector<double> sharesFor(std::vector<double> wishes, const std::vector<double>& weights) {
    const double largest = *std::max_element(wishes.begin(), wishes.end());
    // Where only a few tiles are noisy at all, the others get what these can't take.
    for (double& wish : wishes) wish = largest > 0.0 ? std::max(wish / largest, kFaintest) : 1.0;
    const auto share = [&](double wish, double factor) { return std::clamp(factor * wish, kLeast, kMost); };
    const auto mean = [&](double factor) {
        double sum = 0.0;
        for (std::size_t i = 0; i < wishes.size(); ++i) sum += weights[i] * share(wishes[i], factor);
        return sum;
    };
    double low = 0.0;
    double high = kMost / kFaintest;
    for (int halved = 0; halved < 100; ++halved) (mean(0.5 * (low + high)) < 1.0 ? low : high) = 0.5 * (low + high);
    for (double& wish : wishes) wish = share(wish, high);
    return wishes;
}

}  // namespace

std::vector<double> adaptiveShares(const SharedFilm& film) {
    const TileGrid& grid = film.grid();
    std::vector<Sums> tiles(grid.count());
    std::array<Sums, 2> colors{};
    eachPixel(film, [&](const Film& sums, std::size_t pixel, int reference, int x, int y) {
        const std::size_t tile = grid.indexOf(x, y);
        const PixelNoise noise = pixelNoise(sums, pixel, reference);
        for (Sums* const each : {&colors[colorOf(grid, tile)], &tiles[tile]}) {
            each->pixels += 1.0;
            each->means += noise.mean;
            if (noise.variance > 0.0) each->errors += noise.variance / noise.samples;
        }
    });
    eachPixel(film, [&](const Film& sums, std::size_t pixel, int reference, int x, int y) {
        Sums& tile = tiles[grid.indexOf(x, y)];
        const double away = pixelNoise(sums, pixel, reference).mean - tile.mean();
        tile.spread += away * away;
    });
    eachPixel(film, [&](const Film& sums, std::size_t pixel, int reference, int x, int y) {
        const std::size_t tile = grid.indexOf(x, y);
        const Sums& color = colors[colorOf(grid, tile)];
        const PixelNoise noise = pixelNoise(sums, pixel, reference);
        const double scale = std::abs(tiles[tile].shrunk(noise.mean)) + kFloor * std::abs(color.mean());
        if (noise.variance > 0.0) tiles[tile].squares += noise.variance / (scale * scale);
    });

    std::vector<double> shares(grid.count(), 1.0);
    for (std::size_t color = 0; color < colors.size(); ++color) {
        std::vector<std::size_t> own;
        std::vector<double> wishes, weights;
        for (std::size_t tile = 0; tile < grid.count(); ++tile) {
            if (colorOf(grid, tile) != color) continue;
            Sums around;
            for (const std::size_t other : neighbours(grid, tile)) {
                around.pixels += tiles[other].pixels;
                around.squares += tiles[other].squares;
            }
            own.push_back(tile);
            wishes.push_back(around.pixels > 0.0 ? std::sqrt(around.squares / around.pixels) : 0.0);
            weights.push_back(tiles[tile].pixels / colors[color].pixels);
        }
        if (own.empty()) continue;
        const auto found = sharesFor(std::move(wishes), weights);
        for (std::size_t i = 0; i < own.size(); ++i) shares[own[i]] = found[i];
    }
    return shares;
}

bool isShare(double share) noexcept { return share >= kLeast && share <= kMost; }

}  // namespace nemra::core
