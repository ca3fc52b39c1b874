/// Which samples a result has, so that a render can be gone on with.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "engine/core/job/piece.h"

namespace nemra::core {

/// Of a render with adaptive sampling.
struct AdaptiveProgress {
    std::uint32_t pilot = 0;     ///< samples that each pixel gets first
    std::vector<double> shares;  ///< of the tiles in all further ones, see adaptiveShares; empty as long as the pilot lasts
};

struct RenderProgress {
    std::uint64_t fingerprint = 0;  ///< of the scene; see PreparedScene
    int tileSize = 1;               ///< pixels; the tiles that no piece goes beyond
    std::vector<Piece> done;        ///< what is in the film; no two have a sample in common
    std::optional<AdaptiveProgress> adaptive{};
};

std::vector<char> encodeProgress(const RenderProgress& progress);
/// None for bytes that aren't such a record. What the pieces say isn't checked.
std::optional<RenderProgress> decodeProgress(std::span<const char> bytes);

/// The part for adaptive sampling is a record by itself, which earlier readers pass over.
std::vector<char> encodeAdaptive(const AdaptiveProgress& adaptive);
std::optional<AdaptiveProgress> decodeAdaptive(std::span<const char> bytes);

}  // namespace nemra::core
