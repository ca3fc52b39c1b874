/// Letters of 5 x 7 dots for scales, numbers of sources and watermarks.
#pragma once

#include <string_view>

namespace nemra::core {

inline constexpr int kLetterWidth = 6;  ///< dots from one letter to the next
inline constexpr int kLetterHeight = 7;
inline constexpr int kLineHeight = 9;

/// Calls dot(column, row) for each dot of one line of text, from its left upper corner. Only ASCII is drawn; each other character
/// becomes a question mark.
template <class Dot>
void forEachDot(std::string_view text, Dot&& dot);

/// Whether that dot of a letter is set.
bool letterDot(unsigned char letter, int column, int row) noexcept;

/// Letters that a UTF-8 text takes.
int letterCount(std::string_view text) noexcept;

template <class Dot>
void forEachDot(std::string_view text, Dot&& dot) {
    int left = 0;
    for (const char byte : text) {
        const auto letter = static_cast<unsigned char>(byte);
        if ((letter & 0xC0) == 0x80) continue;  // the rest of a character beyond ASCII
        for (int column = 0; column < kLetterWidth - 1; ++column) {
            for (int row = 0; row < kLetterHeight; ++row) {
                if (letterDot(letter, column, row)) dot(left + column, row);
            }
        }
        left += kLetterWidth;
    }
}

}  // namespace nemra::core
