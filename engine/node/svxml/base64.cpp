#include "engine/node/svxml/base64.h"

#include <array>
#include <cstdint>

#include "engine/node/svxml/numbers.h"

namespace nemra::node::svxml {

namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 256> makeDigitValues() {
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    for (std::size_t i = 0; i < kDigits.size(); ++i) values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::int8_t>(i);
    return values;
}

constexpr auto kDigitValues = makeDigitValues();

}  // namespace

std::string toBase64(std::string_view bytes) {
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t left = bytes.size() - i;
        const auto byte = [&](std::size_t k) { return k < left ? static_cast<unsigned char>(bytes[i + k]) : 0U; };
        const std::uint32_t group = byte(0) << 16 | byte(1) << 8 | byte(2);
        out += kDigits[group >> 18];
        out += kDigits[group >> 12 & 63];
        out += left > 1 ? kDigits[group >> 6 & 63] : '=';
        out += left > 2 ? kDigits[group & 63] : '=';
    }
    return out;
}

bool fromBase64(std::string_view text, std::vector<char>& bytes) {
    bytes.clear();
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t group = 0;
    int digits = 0;
    int padding = 0;
    for (const char c : text) {
        if (isBlank(c)) continue;
        const int value = c == '=' ? 0 : kDigitValues[static_cast<unsigned char>(c)];
        if (value < 0 || (padding > 0 && c != '=')) return false;
        if (c == '=') ++padding;
        group = group << 6 | static_cast<std::uint32_t>(value);
        if (++digits < 4) continue;
        if (padding > 2) return false;
        for (int k = 0; k < 3 - padding; ++k) bytes.push_back(static_cast<char>(group >> (16 - 8 * k) & 255));
        group = 0;
        digits = 0;
    }
    return digits == 0;
}

}  // namespace nemra::node::svxml
