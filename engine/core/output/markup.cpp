#include "engine/core/output/markup.h"

namespace nemra::core {

std::string escapedMarkup(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char letter = text[i];
        switch (letter) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            case '\t':
            case '\n':
            case '\r':
                result += letter;
                break;
            default:
                if (static_cast<unsigned char>(letter) < 0x20) {
                    result += replacement;
                } else if (text.substr(i, 2) == "\xEF\xBF" && i + 2 < text.size() &&
                           static_cast<unsigned char>(text[i + 2]) > 0xBD) {
                    result += replacement;  // U+FFFE and U+FFFF
                    i += 2;
                } else {
                    result += letter;
                }
        }
    }
    return result;
}

}  // namespace nemra::core
