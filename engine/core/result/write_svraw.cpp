#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <type_traits>
#include <vector>

#include "engine/common/byte_reader.h"
#include "engine/core/output/in_turn.h"
#include "engine/core/result/pack_numbers.h"
#include "engine/core/result/svraw.h"
#include "engine/core/result/svraw_layout.h"
#include "engine/node/svbin/svbin.h"

namespace nemra::core {

namespace {

using namespace svraw;

/// Puts a chunk behind `file`; `fill(file)` puts its payload there and tells how that is packed.
template <class Fill>
void appendFilledChunk(std::vector<char>& file, std::string_view tag, Fill&& fill) {
    const std::size_t start = file.size();
    file.insert(file.end(), tag.begin(), tag.end());
    file.resize(start + kChunkHead);
    const auto codec = static_cast<std::uint32_t>(fill(file));
    const std::uint64_t size = file.size() - start - kChunkHead;
    std::memcpy(file.data() + start + 4, &codec, sizeof codec);
    std::memcpy(file.data() + start + 8, &size, sizeof size);
    appendNumber(file, libdeflate_crc32(0, file.data() + start, file.size() - start));
}

void appendChunk(std::vector<char>& file, std::string_view tag, std::span<const char> payload) {
    appendFilledChunk(file, tag, [&](std::vector<char>& bytes) {
        bytes.insert(bytes.end(), payload.begin(), payload.end());
        return Codec::stored;
    });
}

template <class Number>
void appendBlock(std::vector<char>& file, std::string_view tag, std::span<const Number> numbers) {
    appendFilledChunk(file, tag, [&](std::vector<char>& bytes) {
        const std::size_t start = bytes.size();
        packNumbers(numbers, bytes);
        const std::size_t used = bytes.size() - start;
        if (used < numbers.size_bytes()) {
            bytes.resize(start + std::max(used, numbers.size_bytes() / kLargestRatio));  // with zeros
            return Codec::packed;
        }
        bytes.resize(start + numbers.size_bytes());
        std::memcpy(bytes.data() + start, numbers.data(), numbers.size_bytes());
        return Codec::stored;
    });
}

/// The arrays of a film, cut into blocks.
class Blocks {
public:
    template <class Number, class Memory>
    void array(std::string_view tag, const std::vector<Number, Memory>& numbers) {
        constexpr std::size_t perBlock = kBlockBytes / sizeof(Number);
        const std::span<const Number> all(numbers);
        for (std::size_t first = 0; first < all.size(); first += perBlock) {
            const auto block = all.subspan(first, std::min(perBlock, all.size() - first));
            blocks_.push_back([tag, block](std::vector<char>& file) { appendBlock(file, tag, block); });
        }
    }
    std::size_t count() const noexcept { return blocks_.size(); }
    void append(std::size_t i, std::vector<char>& file) const { blocks_[i](file); }

private:
    std::vector<std::function<void(std::vector<char>&)>> blocks_;
};

std::vector<char> infoOf(const RawParts& parts) {
    std::vector<char> info;
    appendNumber(info, static_cast<std::int32_t>(parts.film->width));
    appendNumber(info, static_cast<std::int32_t>(parts.film->height));
    appendNumber(info, parts.counts.time);
    appendNumber(info, parts.counts.samples);
    appendNumber(info, parts.counts.wrong);
    appendNumber(info, (parts.hasSnr ? kFlagSnr : 0U) | (parts.draft ? kFlagDraft : 0U));
    appendNumber(info, static_cast<std::uint32_t>(parts.factors.size()));
    for (const double factor : parts.factors) appendNumber(info, factor);
    return info;
}

std::vector<char> channelsOf(const Film& film) {
    std::vector<char> bytes;
    appendNumber(bytes, static_cast<std::uint32_t>(film.channels.size()));
    for (const Channel& channel : film.channels) {
        appendText(bytes, channel.name);
        appendText(bytes, channel.unit);
        appendNumber(bytes, static_cast<std::uint32_t>(channel.kind));
        appendNumber(bytes, channel.wavelength);
        appendNumber(bytes, channel.bandwidth);
    }
    return bytes;
}

}  // namespace

void writeSvraw(const Raw& raw, const TakeBytes& take) {
    const RawParts parts = raw.parts();
    const Film& film = *parts.film;
    std::vector<char> head(kSvrawMagic.size());
    std::memcpy(head.data(), kSvrawMagic.data(), head.size());
    appendNumber(head, kSvrawVersion);
    appendChunk(head, kInfo, infoOf(parts));
    appendChunk(head, kChannels, channelsOf(film));
    if (parts.instrument) appendChunk(head, kInstrument, node::writeSvbin(*parts.instrument).bytes());
    if (parts.output) appendChunk(head, kOutput, node::writeSvbin(*parts.output).bytes());
    if (!take(head)) return;
    Blocks file;
    file.array(kHigh, film.high);
    file.array(kLow, film.low);
    file.array(kSamples, film.samples);
    file.array(kSquaresUpper, film.squares.upper);
    file.array(kSquaresLower, film.squares.lower);
    file.array(kSquaresPart, film.squares.part);
    file.array(kDepth, film.depth);
    file.array(kDepthSamples, film.depthSamples);
    if (parts.offAxis) file.array(kOffAxis, *parts.offAxis);
    bool goesOn = true;
    inTurn(
        file.count(), [&](std::size_t i, std::vector<char>& bytes) { file.append(i, bytes); },
        [&](std::span<const char> bytes) { return goesOn = take(bytes); });
    if (!goesOn) return;
    std::vector<char> end;
    if (parts.progress) appendChunk(end, kProgress, encodeProgress(*parts.progress));
    if (parts.progress && parts.progress->adaptive) appendChunk(end, kAdaptive, encodeAdaptive(*parts.progress->adaptive));
    appendChunk(end, kEnd, std::span<const char>());
    take(end);
}

Buffer writeSvraw(const Raw& raw) {
    Buffer file;
    writeSvraw(raw, [&](std::span<const char> bytes) {
        file.append({bytes.data(), bytes.size()});
        return true;
    });
    return file;
}

}  // namespace nemra::core
