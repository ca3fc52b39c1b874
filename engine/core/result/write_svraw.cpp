#include <libdeflate.h>

#include <memory>
#include <new>

#include "engine/common/byte_reader.h"
#include "engine/core/result/svraw.h"
#include "engine/core/result/svraw_layout.h"
#include "engine/node/svbin/svbin.h"

namespace nemra::core {

namespace {

using namespace svraw;

struct FreeCompressor {
    void operator()(libdeflate_compressor* c) const noexcept { libdeflate_free_compressor(c); }
};

class Writer {
public:
    Writer() : compressor_(libdeflate_alloc_compressor(1)) {
        if (!compressor_) throw std::bad_alloc();
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

    template <class Number>
    void array(std::string_view tag, const std::vector<Number>& numbers) {
        constexpr std::size_t perBlock = kBlockBytes / sizeof(Number);
        for (std::size_t first = 0; first < numbers.size(); first += perBlock) {
            block(tag, numbers.data() + first, std::min(perBlock, numbers.size() - first));
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

    template <class Number>
    void block(std::string_view tag, const Number* numbers, std::size_t count) {
        const auto* const bytes = reinterpret_cast<const char*>(numbers);
        const std::size_t size = count * sizeof(Number);
        shuffled_.resize(size);
        for (std::size_t b = 0; b < sizeof(Number); ++b) {
            char* const plane = shuffled_.data() + b * count;
            for (std::size_t i = 0; i < count; ++i) plane[i] = bytes[i * sizeof(Number) + b];
        }
        // Less than an eighth gained isn't worth the time of the reader.
        deflated_.assign(size - size / 8, 0);
        std::size_t packed =
            libdeflate_deflate_compress(compressor_.get(), shuffled_.data(), size, deflated_.data(), deflated_.size());
        if (packed == 0) return chunk(tag, Codec::stored, {bytes, size});
        packed = std::max(packed, size / kLargestRatio);
        chunk(tag, Codec::shuffledDeflate, {deflated_.data(), packed});
    }

    Buffer file_;
    std::vector<char> shuffled_, deflated_;
    std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor_;
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
    file.array(kSquares, film.squares);
    file.array(kDepth, film.depth);
    file.array(kDepthSamples, film.depthSamples);
    if (parts.offAxis) file.array(kOffAxis, *parts.offAxis);
    return std::move(file).finish();
}

}  // namespace nemra::core
