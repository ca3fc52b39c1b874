#include "engine/node/encoding/utf8.h"

#include <cstdint>
#include <cstring>

namespace nemra::node {

namespace {

/// Length of the sequence at the front of `rest`, or 0 if it is damaged.
std::size_t sequenceLength(std::string_view rest) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(rest[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) return lead == 0 ? 0 : 1;
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || length > rest.size()) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80) return 0;
    const unsigned second = byte(1);
    const bool outside = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) || (lead == 0xF0 && second < 0x90) ||
                         (lead == 0xF4 && second > 0x8F);
    return outside ? 0 : length;
}

/// Eight bytes at once: none with the high bit set, none zero.
bool isPlain(const char* bytes) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    constexpr std::uint64_t kHighs = 0x8080808080808080;
    return ((word | (word - kOnes)) & kHighs) == 0;
}

}  // namespace

std::size_t firstNotText(std::string_view bytes) noexcept {
    std::size_t at = 0;
    while (at < bytes.size()) {
        while (at + 8 <= bytes.size() && isPlain(bytes.data() + at)) at += 8;
        if (at == bytes.size()) break;
        const std::size_t length = sequenceLength(bytes.substr(at));
        if (length == 0) return at;
        at += length;
    }
    return at;
}

std::string readableText(std::string_view bytes) {
    std::string text;
    for (;;) {
        const std::size_t sound = firstNotText(bytes);
        text += bytes.substr(0, sound);
        if (sound == bytes.size()) return text;
        text += "\xEF\xBF\xBD";
        bytes.remove_prefix(sound + 1);
    }
}

}  // namespace nemra::node
