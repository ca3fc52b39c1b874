/// Numbers as text: the shortest form that reads back to the same bits, whatever the process's locale.
#pragma once

#include <algorithm>
#include <charconv>
#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace nemra::node::svxml {

/// Characters of a number at most.
constexpr std::size_t kMaxDigits = 40;

template <class Number>
void appendNumber(std::string& out, Number value) {
    char digits[kMaxDigits];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out.append(digits, end);
}

enum class NumberFault { none, notANumber, outOfRange };

/// True if a number that is out of range is too small rather than too large: its first digit lies behind the point.
inline bool isTooSmall(std::string_view number) {
    const std::size_t e = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, e);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t first = std::min(digits.find_first_of("123456789"), digits.size());
    const auto decade = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
    std::string_view exponent = number.substr(std::min(e + 1, number.size()));
    const bool isNegative = exponent.starts_with('-');
    if (isNegative || exponent.starts_with('+')) exponent.remove_prefix(1);
    std::int64_t value = 0;
    if (std::from_chars(exponent.data(), exponent.data() + exponent.size(), value).ec == std::errc::result_out_of_range)
        return isNegative;
    return decade + (isNegative ? -value : value) < 0;
}

/// The whole of `text` as one number; a leading plus sign is accepted. What is too small for its kind is zero.
template <class Number>
NumberFault parseNumber(std::string_view text, Number& value) {
    if (text.size() > 1 && text[0] == '+' && text[1] != '-' && text[1] != '+') text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec == std::errc::result_out_of_range) {
        if constexpr (std::is_floating_point_v<Number>) {
            if (result.ptr == end && isTooSmall(text)) {
                value = text.starts_with('-') ? -Number{0} : Number{0};
                return NumberFault::none;
            }
        }
        return NumberFault::outOfRange;
    }
    return result.ec == std::errc{} && result.ptr == end ? NumberFault::none : NumberFault::notANumber;
}

inline bool isBlank(char c) noexcept { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

/// Takes the next word off the front of `text`; empty when nothing but blanks is left.
inline std::string_view takeWord(std::string_view& text) noexcept {
    std::size_t begin = 0;
    while (begin < text.size() && isBlank(text[begin])) ++begin;
    std::size_t end = begin;
    while (end < text.size() && !isBlank(text[end])) ++end;
    const std::string_view word = text.substr(begin, end - begin);
    text.remove_prefix(end);
    return word;
}

inline std::size_t countWords(std::string_view text) noexcept {
    std::size_t words = 0;
    bool inWord = false;
    for (const char c : text) {
        words += !inWord && !isBlank(c) ? 1 : 0;
        inWord = !isBlank(c);
    }
    return words;
}

}  // namespace nemra::node::svxml
