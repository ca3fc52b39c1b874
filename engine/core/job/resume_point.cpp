#include "engine/core/job/resume_point.h"

#include <unistd.h>

#include <algorithm>
#include <functional>

#include "engine/common/log.h"
#include "engine/core/job/adaptive.h"
#include "engine/core/job/done_samples.h"
#include "engine/core/job/halt_condition.h"
#include "engine/core/job/tile_grid.h"
#include "engine/core/result/read_file.h"
#include "engine/core/result/svraw.h"

namespace nemra::core {

namespace {

bool isOf(const PreparedScene& scene, const Film& film) {
    const auto empty = scene.makeFilm({0, 0, 0, 0});
    const auto& channels = empty->channels;
    const auto sameName = [](const Channel& x, const Channel& y) { return x.name == y.name; };
    return film.width == scene.width() && film.height == scene.height() &&
           std::equal(film.channels.begin(), film.channels.end(), channels.begin(), channels.end(), sameName);
}

bool isInside(const PreparedScene::Tile& tile, const Film& film) {
    return tile.x0 >= 0 && tile.y0 >= 0 && tile.x0 < tile.x1 && tile.y0 < tile.y1 && tile.x1 <= film.width &&
           tile.y1 <= film.height;
}

bool isPlausible(const AdaptiveProgress& adaptive, const TileGrid& grid) {
    if (adaptive.pilot != kPilotSamples || grid.size != kAdaptiveTile) return false;
    return adaptive.shares.empty() ||
           (adaptive.shares.size() == grid.count() && std::all_of(adaptive.shares.begin(), adaptive.shares.end(), isShare));
}

/// Whether the pieces can be what the film was made of: in their tiles, none twice, and for each pixel at least as many samples
/// as it kept.
bool isPlausible(const RenderProgress& progress, const Film& film) {
    constexpr int mostPieces = 256;  // of a tile; a few come from threads that were stopped in the middle of one
    if (progress.tileSize < TileGrid::kSmallest || progress.tileSize > TileGrid::kLargest) return false;
    const TileGrid grid{film.width, film.height, progress.tileSize};
    if (progress.adaptive && !isPlausible(*progress.adaptive, grid)) return false;
    std::vector<DoneSamples> tiles;
    tiles.reserve(grid.count());
    for (std::size_t i = 0; i < grid.count(); ++i) tiles.emplace_back(grid.tile(i));
    std::vector<int> pieces(grid.count(), 0);
    std::vector<std::uint64_t> taken(film.samples.size(), 0);
    for (const Piece& piece : progress.done) {
        const PreparedScene::Tile& tile = piece.tile;
        if (!isInside(tile, film) || piece.end() > HaltCondition::kEndOfSamples) return false;
        const std::size_t index = grid.indexOf(tile.x0, tile.y0);
        if (++pieces[index] > mostPieces || !tiles[index].add(piece)) return false;
        for (int x = tile.x0; x < tile.x1; ++x) {
            for (int y = tile.y0; y < tile.y1; ++y) taken[film.pixel(x, y)] += piece.count;
        }
    }
    return std::equal(taken.begin(), taken.end(), film.samples.begin(), std::greater_equal<>());
}

}  // namespace

bool findResumePoint(const std::string& path, const RenderIdentity& render, std::shared_ptr<const ResumePoint>& point) {
    point = nullptr;
    if (::access(path.c_str(), F_OK) != 0) return true;
    const auto bytes = readFileWhole(path);
    if (!bytes) return false;
    const auto raw = readSvraw(bytes->bytes(), path);
    if (!raw) return false;
    const RawParts parts = raw->parts();
    const auto refuse = [&](const char* why) {
        log::error(path, std::string("the render can't go on from this file: ") + why);
        return false;
    };
    if (!parts.progress) return refuse("it wasn't saved by a render with \"resume\"");
    if (parts.progress->fingerprint != render.fingerprint || !isOf(render.scene, *parts.film)) {
        return refuse(
            "it is of another scene, another setup or another version of the engine, or what libraries gave has changed");
    }
    if (parts.progress->adaptive.has_value() != render.adaptive) {
        return refuse(render.adaptive ? "it was saved by a render without \"adaptive\""
                                      : "it was saved by a render with \"adaptive\"");
    }
    if (!isPlausible(*parts.progress, *parts.film)) return refuse("its record of the samples taken is damaged");
    point = std::make_shared<const ResumePoint>(ResumePoint{parts.film, parts.progress, parts.counts.time});
    return true;
}

}  // namespace nemra::core
