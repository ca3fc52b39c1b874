#include "engine/core/result/render_progress.h"

#include "engine/common/byte_reader.h"

namespace nemra::core {

namespace {

constexpr std::size_t kPieceBytes = 6 * 4;

}  // namespace

std::vector<char> encodeProgress(const RenderProgress& progress) {
    std::vector<char> bytes;
    bytes.reserve(16 + progress.done.size() * kPieceBytes);
    appendNumber(bytes, progress.fingerprint);
    appendNumber(bytes, static_cast<std::int32_t>(progress.tileSize));
    appendNumber(bytes, static_cast<std::uint32_t>(progress.done.size()));
    for (const Piece& piece : progress.done) {
        for (const int edge : {piece.tile.x0, piece.tile.y0, piece.tile.x1, piece.tile.y1}) {
            appendNumber(bytes, static_cast<std::int32_t>(edge));
        }
        appendNumber(bytes, piece.first);
        appendNumber(bytes, piece.count);
    }
    return bytes;
}

std::optional<RenderProgress> decodeProgress(std::span<const char> bytes) {
    ByteReader reader(bytes);
    RenderProgress progress;
    progress.fingerprint = reader.value<std::uint64_t>();
    progress.tileSize = reader.value<std::int32_t>();
    progress.done.resize(reader.count(kPieceBytes));
    for (Piece& piece : progress.done) {
        for (int* const edge : {&piece.tile.x0, &piece.tile.y0, &piece.tile.x1, &piece.tile.y1}) {
            *edge = reader.value<std::int32_t>();
        }
        piece.first = reader.value<std::uint32_t>();
        piece.count = reader.value<std::uint32_t>();
    }
    if (!reader.ok() || reader.left() > 0) return std::nullopt;
    return progress;
}

std::vector<char> encodeAdaptive(const AdaptiveProgress& adaptive) {
    std::vector<char> bytes;
    bytes.reserve(8 + adaptive.shares.size() * sizeof(double));
    appendNumber(bytes, adaptive.pilot);
    appendNumber(bytes, static_cast<std::uint32_t>(adaptive.shares.size()));
    for (const double share : adaptive.shares) appendNumber(bytes, share);
    return bytes;
}

std::optional<AdaptiveProgress> decodeAdaptive(std::span<const char> bytes) {
    ByteReader reader(bytes);
    AdaptiveProgress adaptive;
    adaptive.pilot = reader.value<std::uint32_t>();
    adaptive.shares.resize(reader.count(sizeof(double)));
    for (double& share : adaptive.shares) share = reader.value<double>();
    if (!reader.ok() || reader.left() > 0) return std::nullopt;
    return adaptive;
}

}  // namespace nemra::core
