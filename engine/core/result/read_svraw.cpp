#include <libdeflate.h>

#include <cmath>
#include <memory>
#include <new>

#include "engine/common/byte_reader.h"
#include "engine/common/huge_pages.h"
#include "engine/common/log.h"
#include "engine/core/film/pageable.h"
#include "engine/core/output/parallel_rows.h"
#include "engine/core/result/pack_numbers.h"
#include "engine/core/result/svraw.h"
#include "engine/core/result/svraw_layout.h"
#include "engine/node/encoding/utf8.h"
#include "engine/node/svbin/svbin.h"

namespace nemra::core {

namespace {

using namespace svraw;

/// Why and where reading stops.
struct Damage {
    std::size_t at;
    std::string why;
};

struct FreeDecompressor {
    void operator()(libdeflate_decompressor* d) const noexcept { libdeflate_free_decompressor(d); }
};

struct Chunk {
    std::size_t at;  ///< in the file
    std::string_view tag;
    std::uint32_t codec;
    std::span<const char> payload;
    std::uint32_t sum;
};

constexpr const char* kWrongSum = "the checksum of a chunk is wrong";

constexpr std::uint64_t kFreeBytes = std::uint64_t{64} << 20;
constexpr std::uint64_t kMostPerByte = 200;
constexpr std::int32_t kMaxSide = 1 << 20;
constexpr std::size_t kSmallestChannel = 4 + 4 + 4 + 8 + 8;

class Reader {
public:
    Reader(std::span<const char> bytes, const std::string& origin) : bytes_(bytes), origin_(origin), rest_(bytes) {}

    std::shared_ptr<Raw> read() {
        const auto magic = rest_.take(kSvrawMagic.size());
        if (std::string_view(magic.data(), magic.size()) != kSvrawMagic) fail("this is no svraw file");
        const auto version = rest_.value<std::uint32_t>();
        if (!rest_.ok()) fail("the file is cut short");
        if (version == 0 || version > kSvrawVersion) {
            fail("the file has version " + std::to_string(version) + ", of which this reader knows nothing yet");
        }
        readInfo(expect(kInfo));
        readChannels(expect(kChannels));
        Chunk chunk = next();
        if (chunk.tag == kInstrument) {
            parts_.instrument = readNode(chunk, "instrument");
            chunk = next();
        }
        if (chunk.tag == kOutput) {
            parts_.output = readNode(chunk, "output");
            chunk = next();
        }
        checkSize(chunk.at);
        const Shape shape{pixels_, film_->channels.size()};
        makePageable(*film_);
        readArray(chunk, kHigh, film_->high, shape.cells());
        readArray(chunk, kLow, film_->low, shape.cells());
        readArray(chunk, kSamples, film_->samples, shape.pixels);
        readSquares(chunk, shape.ifChannels());
        readArray(chunk, kDepth, film_->depth, shape.ifChannels());
        readArray(chunk, kDepthSamples, film_->depthSamples, shape.ifChannels());
        if (chunk.tag == kOffAxis) {
            auto offAxis = std::make_shared<std::vector<float>>();
            readArray(chunk, kOffAxis, *offAxis, shape.pixels);
            parts_.offAxis = std::move(offAxis);
        }
        if (!isWhole(chunk)) fail(chunk.at, kWrongSum);
        if (chunk.tag != kEnd) fail(chunk.at, "chunk '" + std::string(chunk.tag) + "' in the wrong place");
        if (rest_.left() > 0) fail("bytes behind the end");
        parts_.film = std::move(film_);
        parts_.progress = std::move(progress_);
        return std::make_shared<Raw>(std::move(parts_));
    }

private:
    std::size_t place() const noexcept { return bytes_.size() - rest_.left(); }
    [[noreturn]] void fail(std::string why) const { fail(place(), std::move(why)); }
    [[noreturn]] static void fail(std::size_t at, std::string why) { throw Damage{at, std::move(why)}; }

    /// The next chunk that isn't to be skipped. Its checksum may be wrong still.
    Chunk next() {
        for (;;) {
            Chunk chunk{};
            chunk.at = place();
            const auto tag = rest_.take(4);
            chunk.tag = {tag.data(), tag.size()};
            chunk.codec = rest_.value<std::uint32_t>();
            const auto size = rest_.value<std::uint64_t>();
            if (!rest_.ok() || size > rest_.left()) fail(chunk.at, "the file is cut short, or a chunk's length is wrong");
            chunk.payload = rest_.take(static_cast<std::size_t>(size));
            chunk.sum = rest_.value<std::uint32_t>();
            if (!rest_.ok()) fail(chunk.at, "the file is cut short");
            if (chunk.tag[0] < 'a' || chunk.tag[0] > 'z') return chunk;
            if (!isWhole(chunk)) fail(chunk.at, kWrongSum);
            if (chunk.tag == kProgress) readProgress(chunk);
            if (chunk.tag == kAdaptive) readAdaptive(chunk);
        }
    }

    /// Whether a chunk's checksum is right. Takes time for the blocks of arrays, so those are looked at several at a time.
    bool isWhole(const Chunk& chunk) const noexcept {
        return chunk.sum == libdeflate_crc32(0, bytes_.data() + chunk.at, kChunkHead + chunk.payload.size());
    }

    void demand(const Chunk& chunk, std::string_view tag) const {
        if (chunk.tag == tag) return;
        if (!isWhole(chunk)) fail(chunk.at, kWrongSum);
        fail(chunk.at, "chunk '" + std::string(tag) + "' is missing");
    }

    Chunk expect(std::string_view tag) {
        const Chunk chunk = next();
        demand(chunk, tag);
        if (!isWhole(chunk)) fail(chunk.at, kWrongSum);
        return chunk;
    }

    void readInfo(const Chunk& chunk) {
        ByteReader info(chunk.payload);
        film_->width = info.value<std::int32_t>();
        film_->height = info.value<std::int32_t>();
        parts_.counts.time = info.value<double>();
        parts_.counts.samples = info.value<std::uint64_t>();
        parts_.counts.wrong = info.value<std::uint64_t>();
        const auto flags = info.value<std::uint32_t>();
        parts_.hasSnr = (flags & kFlagSnr) != 0;
        parts_.draft = (flags & kFlagDraft) != 0;
        const std::size_t factors = info.count(sizeof(double));
        for (std::size_t i = 0; i < factors; ++i) {
            const auto factor = info.value<double>();
            if (!std::isfinite(factor)) fail(chunk.at, "a factor of a light quantity isn't a number");
            if (i < parts_.factors.size()) parts_.factors[i] = factor;
        }
        parts_.factors[NEMRA_QUANTITY_RAW] = 1.0;
        if (!info.ok()) fail(chunk.at, "the chunk is too short");
        if (film_->width < 1 || film_->height < 1 || film_->width > kMaxSide || film_->height > kMaxSide) {
            fail(chunk.at, "an image of " + std::to_string(film_->width) + " x " + std::to_string(film_->height) + " pixels");
        }
        if (!(parts_.counts.time >= 0.0 && std::isfinite(parts_.counts.time))) fail(chunk.at, "the render time isn't a number");
        pixels_ = static_cast<std::size_t>(film_->width) * static_cast<std::size_t>(film_->height);
    }

    void readProgress(const Chunk& chunk) {
        auto progress = decodeProgress(chunk.payload);
        if (!progress) fail(chunk.at, "the record of the samples taken is damaged");
        progress->adaptive = progress_ ? std::move(progress_->adaptive) : std::nullopt;
        progress_ = std::make_shared<RenderProgress>(std::move(*progress));
    }

    void readAdaptive(const Chunk& chunk) {
        auto adaptive = decodeAdaptive(chunk.payload);
        if (!adaptive || !progress_) fail(chunk.at, "the record of adaptive sampling is damaged");
        progress_->adaptive = std::move(adaptive);
    }

    void readChannels(const Chunk& chunk) {
        ByteReader reader(chunk.payload);
        const std::size_t count = reader.count(kSmallestChannel);
        for (std::size_t i = 0; i < count && reader.ok(); ++i) {
            Channel channel;
            channel.name = reader.text();
            channel.unit = reader.text();
            const auto kind = reader.value<std::uint32_t>();
            channel.wavelength = reader.value<double>();
            channel.bandwidth = reader.value<double>();
            if (!reader.ok()) break;
            if (node::firstNotText(channel.name) != channel.name.size() ||
                node::firstNotText(channel.unit) != channel.unit.size())
                fail(chunk.at, "the name or unit of a channel isn't text");
            if (kind > static_cast<std::uint32_t>(ChannelKind::spectral)) fail(chunk.at, "a channel of unknown kind");
            channel.kind = static_cast<ChannelKind>(kind);
            if (!std::isfinite(channel.wavelength) || !std::isfinite(channel.bandwidth) || channel.wavelength < 0.0 ||
                channel.bandwidth < 0.0) {
                fail(chunk.at, "the wavelength of channel '" + channel.name + "' isn't a length");
            }
            film_->channels.push_back(std::move(channel));
        }
        if (!reader.ok()) fail(chunk.at, "the chunk is too short");
    }

    /// Null for a class that this version doesn't know, after a warning.
    std::shared_ptr<const node::Node> readNode(const Chunk& chunk, std::string_view family) {
        if (!isWhole(chunk)) fail(chunk.at, kWrongSum);
        std::vector<log::Message> messages;
        std::shared_ptr<const node::Node> node;
        {
            const log::Capture capture([&](const log::Message& message) { messages.push_back(message); });
            node = node::readSvbinNode(chunk.payload, origin_, node::Unknown::skip);
        }
        for (const log::Message& message : messages) {
            if (message.level == NEMRA_LOG_ERROR) fail(chunk.at, "the " + std::string(family) + ": " + message.text);
        }
        for (const log::Message& message : messages) log::emit(message.level, message.source, message.text);
        if (node && node->family() != family)
            fail(chunk.at, "a node of the family " + node->family() + " as " + std::string(family));
        return node;
    }

    /// Before any array is made.
    void checkSize(std::size_t at) const {
        const std::uint64_t perPixel = std::max<std::uint64_t>(1, film_->channels.size());
        const std::uint64_t largest = sizeof(double) * perPixel;
        if (largest > kMaxBufferBytes / pixels_) {
            fail(at, "an image of " + std::to_string(film_->width) + " x " + std::to_string(film_->height) + " pixels with " +
                         std::to_string(perPixel) + " channels is larger than " + std::to_string(kMaxBufferBytes) + " bytes");
        }
        const Shape shape{pixels_, film_->channels.size()};
        const std::uint64_t all = 2 * sizeof(double) * shape.cells() + sizeof(std::uint32_t) * shape.pixels +
                                  (3 * sizeof(double) + sizeof(std::uint32_t) + 1) * shape.ifChannels();
        if (all > kFreeBytes && all / kMostPerByte > bytes_.size()) fail(at, "the file is too small for what it claims to hold");
    }

    void readSquares(Chunk& chunk, std::size_t count) {
        if (chunk.tag != kSquares) {
            readArray(chunk, kSquaresUpper, film_->squares.upper, count);
            readArray(chunk, kSquaresLower, film_->squares.lower, count);
            readArray(chunk, kSquaresPart, film_->squares.part, count);
            return;
        }
        std::vector<double> sums;
        readArray(chunk, kSquares, sums, count);
        film_->squares.resize(count);
        for (std::size_t pixel = 0; pixel < count; ++pixel) film_->squares.put(pixel, std::max(0.0, sums[pixel]));
    }

    template <class Number, class Memory>
    void readArray(Chunk& chunk, std::string_view tag, std::vector<Number, Memory>& numbers, std::size_t count) {
        constexpr std::size_t perBlock = kBlockBytes / sizeof(Number);
        std::vector<Chunk> blocks;
        for (std::size_t first = 0; first < count; first += perBlock) {
            demand(chunk, tag);
            blocks.push_back(chunk);
            chunk = next();
        }
        reserveOnHugePages(numbers, count);
        numbers.resize(count);
        std::vector<const char*> damage(blocks.size(), nullptr);
        parallelRows(
            static_cast<int>(blocks.size()),
            [&](int i) {
                const auto block = static_cast<std::size_t>(i);
                const std::size_t first = block * perBlock;
                const std::span<Number> part(numbers.data() + first, std::min(perBlock, count - first));
                damage[block] = isWhole(blocks[block]) ? unpack(blocks[block], part) : kWrongSum;
            },
            1);
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            if (damage[i]) fail(blocks[i].at, damage[i]);
        }
    }

    /// What is wrong with the block, or null.
    template <class Number>
    static const char* unpack(const Chunk& chunk, std::span<Number> numbers) noexcept {
        switch (static_cast<Codec>(chunk.codec)) {
            case Codec::stored:
                if (chunk.payload.size() != numbers.size_bytes()) return "a block of the wrong size";
                std::memcpy(numbers.data(), chunk.payload.data(), chunk.payload.size());
                return nullptr;
            case Codec::shuffledDeflate:
                return inflate(chunk.payload, reinterpret_cast<char*>(numbers.data()), numbers.size(), sizeof(Number));
            case Codec::packed:
                return unpackNumbers(chunk.payload, numbers) ? nullptr : "a block that can't be unpacked";
        }
        return "an unknown way of packing";
    }

    static const char* inflate(std::span<const char> payload, char* numbers, std::size_t count, std::size_t width) noexcept {
        const std::size_t size = count * width;
        const std::unique_ptr<char[]> shuffled(new (std::nothrow) char[size]);
        const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
        if (!shuffled || !decompressor) return "out of memory";
        std::size_t taken = 0;
        std::size_t made = 0;
        const auto result = libdeflate_deflate_decompress_ex(decompressor.get(), payload.data(), payload.size(), shuffled.get(),
                                                             size, &taken, &made);
        if (result != LIBDEFLATE_SUCCESS || made != size) return "a block that can't be unpacked";
        for (std::size_t b = 0; b < width; ++b) {
            const char* const plane = shuffled.get() + b * count;
            for (std::size_t i = 0; i < count; ++i) numbers[i * width + b] = plane[i];
        }
        return nullptr;
    }

    std::span<const char> bytes_;
    const std::string& origin_;
    ByteReader rest_;
    std::shared_ptr<Film> film_ = std::make_shared<Film>();
    std::size_t pixels_ = 0;
    RawParts parts_;
    std::shared_ptr<RenderProgress> progress_;
};

}  // namespace

std::shared_ptr<Raw> readSvraw(std::span<const char> bytes, const std::string& origin) {
    try {
        return Reader(bytes, origin).read();
    } catch (const Damage& damage) {
        log::error(origin + ":byte " + std::to_string(damage.at), damage.why);
        return nullptr;
    }
}

}  // namespace nemra::core
