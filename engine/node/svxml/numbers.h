/// Numbers as text: the shortest form that reads back to the same bits, whatever the process's locale.
#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>

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

/// The whole of `text` as one number; a leading plus sign is accepted.
template <class Number>
NumberFault parseNumber(std::string_view text, Number& value) {
    if (text.size() > 1 && text[0] == '+' && text[1] != '-' && text[1] != '+') text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec == std::errc::result_out_of_range) return NumberFault::outOfRange;
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
