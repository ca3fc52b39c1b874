#include "engine/core/image/exr_dwa.h"

#include <ImfChannelList.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/common/byte_reader.h"
#include "engine/core/image/exr_chunk.h"

namespace nemra::core {

namespace {

/// What becomes of a channel: deflated as it is, blocks of cosines, or runs.
enum class Scheme { plain, cosines, runs };

struct Rule {
    std::string suffix;
    Scheme scheme;
    int type;
    bool ignoresCase;
};

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// The rules at the front of a chunk, by which the last part of a channel's name and its type decide; none if they are damaged.
std::optional<std::vector<Rule>> takeRules(ByteReader& reader) {
    constexpr std::size_t sizeBytes = 2;
    const std::size_t size = reader.value<std::uint16_t>();
    ByteReader text(reader.take(size < sizeBytes ? 0 : size - sizeBytes));
    std::vector<Rule> rules;
    while (text.ok() && text.left() > 0) {
        Rule rule;
        while (const char c = text.value<char>()) rule.suffix += c;
        const unsigned value = text.value<unsigned char>();
        if ((value >> 2 & 3) > static_cast<unsigned>(Scheme::runs)) return std::nullopt;
        rule.scheme = static_cast<Scheme>(value >> 2 & 3);
        rule.ignoresCase = (value & 1) != 0;
        rule.type = text.value<unsigned char>();
        rules.push_back(std::move(rule));
    }
    if (!text.ok()) return std::nullopt;
    return rules;
}

Scheme schemeOf(const std::vector<Rule>& rules, const std::string& name, int type) {
    const std::string suffix = name.substr(name.rfind('.') + 1);  // all of it without a dot
    Scheme scheme = Scheme::plain;
    for (const Rule& rule : rules) {
        if (rule.type == type && (rule.ignoresCase ? lower(suffix) : suffix) == rule.suffix) scheme = rule.scheme;
    }
    return scheme;
}

}  // namespace

bool isWholeDwaChunk(const Imf::Header& header, const Imath::Box2i& pixels, std::span<const char> packed) {
    ByteReader reader(packed);
    const auto version = reader.value<std::uint64_t>();
    const auto plainSize = reader.value<std::uint64_t>();
    const auto plainPacked = reader.value<std::uint64_t>();
    const auto wavesPacked = reader.value<std::uint64_t>();
    const auto meansPacked = reader.value<std::uint64_t>();
    const auto runsDeflated = reader.value<std::uint64_t>();
    const auto runsPacked = reader.value<std::uint64_t>();
    const auto runsSize = reader.value<std::uint64_t>();
    const auto waves = reader.value<std::uint64_t>();
    const auto means = reader.value<std::uint64_t>();
    reader.value<std::uint64_t>();                   // how the waves are packed
    if (!reader.ok() || version != 2) return false;  // those before it never left their maker's house
    const auto rules = takeRules(reader);
    if (!rules) return false;
    std::array<std::uint64_t, 3> bytes{};
    std::uint64_t blocks = 0;
    for (auto i = header.channels().begin(); i != header.channels().end(); ++i) {
        const Imf::Channel& channel = i.channel();
        const auto scheme = schemeOf(*rules, i.name(), channel.type);
        const std::uint64_t wide = exrMultiples(pixels.min.x, pixels.max.x, channel.xSampling);
        const std::uint64_t high = exrMultiples(pixels.min.y, pixels.max.y, channel.ySampling);
        bytes[static_cast<std::size_t>(scheme)] += wide * high * (channel.type == Imf::HALF ? 2 : 4);
        if (scheme == Scheme::cosines) blocks += (wide + 7) / 8 * ((high + 7) / 8);
    }
    const auto take = [&](std::uint64_t size) { return reader.take(static_cast<std::size_t>(size)); };
    const auto plain = take(plainPacked);
    take(wavesPacked);
    take(meansPacked);
    const auto runs = take(runsDeflated);
    if (!reader.ok() || means != blocks) return false;
    // A block has one mean and at least one number that ends its waves.
    if (blocks > 0 && (meansPacked == 0 || wavesPacked == 0 || waves < blocks)) return false;
    const auto isWhole = [](std::uint64_t wanted, std::uint64_t said, std::uint64_t unpacked, std::span<const char> data) {
        if (wanted == 0) return true;
        return said == wanted && unpacked <= 2 * wanted && inflatesTo(unpacked, data);
    };
    return isWhole(bytes[0], plainSize, plainSize, plain) && isWhole(bytes[2], runsSize, runsPacked, runs);
}

}  // namespace nemra::core
