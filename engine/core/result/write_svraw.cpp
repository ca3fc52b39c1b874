#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>

#include "engine/common/byte_reader.h"
#include "engine/core/output/parallel_rows.h"
#include "engine/core/result/svraw.h"
#include "engine/core/result/svraw_layout.h"
#include "engine/node/svbin/svbin.h"

namespace nemra::core {

namespace {

using namespace svraw;

struct FreeCompressor {
    void operator()(libdeflate_compressor* c) const noexcept { libdeflate_free_compressor(c); }
};

/// A block as it goes into a chunk.
struct Packed {
    Codec codec = Codec::stored;
    std::vector<char> bytes;
    bool outOfMemory = false;
};

Packed pack(const char* numbers, std::size_t count, std::size_t width) noexcept {
    Packed packed;
    try {
        const std::size_t size = count * width;
        std::vector<char> shuffled(size);
        for (std::size_t b = 0; b < width; ++b) {
            char* const plane = shuffled.data() + b * count;
            for (std::size_t i = 0; i < count; ++i) plane[i] = numbers[i * width + b];
        }
        const std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor(libdeflate_alloc_compressor(1));
        if (!compressor) throw std::bad_alloc();
        // Less than an eighth gained isn't worth the time of the reader.
        packed.bytes.resize(size - size / 8);
        const std::size_t used =
            libdeflate_deflate_compress(compressor.get(), shuffled.data(), size, packed.bytes.data(), packed.bytes.size());
        if (used == 0) {
            packed.bytes.assign(numbers, numbers + size);
        } else {
            packed.codec = Codec::shuffledDeflate;
            packed.bytes.resize(used);
            packed.bytes.resize(std::max(used, size / kLargestRatio));  // with zeros
        }
    } catch (...) {
        packed.outOfMemory = true;
    }
    return packed;
}

class Writer {
public:
    Writer() {
        file_.append(kSvrawMagic);
        number(kSvrawVersion);
    }

    void chunk(std::string_view tag, Codec codec, std::span<const char> payload) {
        const std::size_t start = file_.size();
        file_.append(tag);
        number(static_cast<std::uint32_t>(codec));
        number(static_cast<std::uint64_t>(payload.size()));
        file_.append({payload.data(), payload.size()});
        number(libdeflate_crc32(0, file_.data() + start, file_.size() - start));
    }

    template <class Number, class Memory>
    void array(std::string_view tag, const std::vector<Number, Memory>& numbers) {
        constexpr std::size_t perBlock = kBlockBytes / sizeof(Number);
        constexpr std::size_t together = 8;  // blocks that are packed at the same time
        const auto* const bytes = reinterpret_cast<const char*>(numbers.data());
        const std::size_t blocks = (numbers.size() + perBlock - 1) / perBlock;
        std::array<Packed, together> packed;
        for (std::size_t first = 0; first < blocks; first += together) {
            const std::size_t here = std::min(together, blocks - first);
            parallelRows(
                static_cast<int>(here),
                [&](int i) {
                    const std::size_t at = (first + static_cast<std::size_t>(i)) * perBlock;
                    packed[static_cast<std::size_t>(i)] =
                        pack(bytes + at * sizeof(Number), std::min(perBlock, numbers.size() - at), sizeof(Number));
                },
                1);
            for (std::size_t i = 0; i < here; ++i) {
                if (packed[i].outOfMemory) throw std::bad_alloc();
                chunk(tag, packed[i].codec, packed[i].bytes);
            }
        }
    }

    Buffer finish() && {
        chunk(kEnd, Codec::stored, {});
        return std::move(file_);
    }

private:
    template <class Number>
    void number(Number n) {
        file_.append({reinterpret_cast<const char*>(&n), sizeof n});
    }

    Buffer file_;
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

Buffer writeSvraw(const Raw& raw) {
    const RawParts parts = raw.parts();
    const Film& film = *parts.film;
    Writer file;
    file.chunk(kInfo, Codec::stored, infoOf(parts));
    file.chunk(kChannels, Codec::stored, channelsOf(film));
    if (parts.instrument) file.chunk(kInstrument, Codec::stored, node::writeSvbin(*parts.instrument).bytes());
    if (parts.output) file.chunk(kOutput, Codec::stored, node::writeSvbin(*parts.output).bytes());
    file.array(kHigh, film.high);
    file.array(kLow, film.low);
    file.array(kSamples, film.samples);
    file.array(kSquaresUpper, film.squares.upper);
    file.array(kSquaresLower, film.squares.lower);
    file.array(kSquaresPart, film.squares.part);
    file.array(kDepth, film.depth);
    file.array(kDepthSamples, film.depthSamples);
    if (parts.offAxis) file.array(kOffAxis, *parts.offAxis);
    if (parts.progress) file.chunk(kProgress, Codec::stored, encodeProgress(*parts.progress));
    return std::move(file).finish();
}

}  // namespace nemra::core
