#include "engine/node/svxml/outline.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>

#include "engine/node/encoding/report.h"
#include "engine/node/svxml/numbers.h"

namespace nemra::node::svxml {

namespace {

constexpr std::size_t kLong = 512;  // below that the record of a cut would cost as much
constexpr std::string_view kEscape = "\xE2\x90\x9B";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kEscapeSize = 3 + 4;
constexpr std::size_t kNone = std::string_view::npos;

/// Behind the end of the tag that begins at `at`: a '>' outside of quotes.
std::size_t endOfTag(std::string_view text, std::size_t at) {
    char quote = 0;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        if (quote != 0) {
            if (c == quote) quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            return at + 1;
        }
    }
    return kNone;
}

/// Behind the end of the markup that begins at `at`.
std::size_t endOfMarkup(std::string_view text, std::size_t at) {
    for (const auto& [begin, end] :
         {std::pair<std::string_view, std::string_view>{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}}) {
        if (text.substr(at, begin.size()) != begin) continue;
        const std::size_t found = text.find(end, at + begin.size());
        return found == kNone ? kNone : found + end.size();
    }
    return endOfTag(text, at);
}

/// The character that the escape at the front of `text` stands for, or "".
std::string_view unescaped(std::string_view text, char& control) {
    if (text.size() < kEscapeSize || !text.starts_with(kEscape)) return {};
    unsigned code = 0;
    const char* const end = text.data() + kEscapeSize;
    if (std::from_chars(text.data() + 3, end, code, 16).ptr != end) return {};
    control = static_cast<char>(code);
    if (code > 0 && code < 0x20) return {&control, 1};
    return code == 0x241b ? kEscape : code == 0xfffe ? "\xEF\xBF\xBE" : code == 0xffff ? "\xEF\xBF\xBF" : std::string_view();
}

bool isAllBlank(std::string_view text) { return std::all_of(text.begin(), text.end(), isBlank); }

}  // namespace

Outline::Outline(std::string_view text) : text_(text) {
    std::ptrdiff_t depth = 0;
    std::size_t at = 0;
    for (bool first = true;; first = false) {
        const std::size_t open = std::min(text.find('<', at), text.size());
        std::string_view between = text.substr(at, open - at);
        if (first && between.starts_with(kByteOrderMark)) between.remove_prefix(kByteOrderMark.size());
        if (depth <= 0 && !isAllBlank(between)) throw Fault{at, "text stands outside of the outermost element"};
        takeText(at, open);
        if (open == text.size()) break;
        if (text.substr(open, 9) == "<!DOCTYPE") {  // has tags of its own inside, and is refused anyway
            takeMarkup(open, text.size());
            isWhole_ = true;
            return;
        }
        at = endOfMarkup(text, open);
        takeMarkup(open, std::min(at, text.size()));
        if (at == kNone) return;
        const char kind = text[open + 1];
        if (kind == '/') --depth;
        if (kind != '/' && kind != '!' && kind != '?' && text[at - 2] != '/') ++depth;
    }
    isWhole_ = depth <= 0;
}

void Outline::takeMarkup(std::size_t begin, std::size_t end) {
    for (std::size_t at = begin; at < end;) {
        const std::size_t escape = std::min(text_.substr(0, end).find(kEscape, at), end);
        reduced_.insert(reduced_.end(), text_.begin() + at, text_.begin() + escape);
        if (escape == end) return;
        char control = 0;
        const std::string_view character = unescaped(text_.substr(escape), control);
        at = escape + (character.empty() ? kEscape.size() : kEscapeSize);
        if (character.empty()) {
            reduced_.insert(reduced_.end(), kEscape.begin(), kEscape.end());
        } else {
            cut(character, escape, kEscapeSize, false);
        }
    }
}

void Outline::takeText(std::size_t begin, std::size_t end) {
    const std::string_view text = text_.substr(begin, end - begin);
    const bool isAsItIs = text.size() >= kLong && text.find('&') == kNone && text.find('\r') == kNone &&
                          text.find(kEscape[0]) == kNone && !isAllBlank(text);
    if (isAsItIs) {
        cut("0", begin, text.size(), true);
    } else {
        takeMarkup(begin, end);
    }
}

void Outline::cut(std::string_view by, std::size_t at, std::size_t size, bool isText) {
    cuts_.push_back({reduced_.size(), by.size(), at, size, isText});
    reduced_.insert(reduced_.end(), by.begin(), by.end());
}

const Outline::Cut* Outline::lastBefore(std::size_t reducedAt) const noexcept {
    const auto behind = std::upper_bound(cuts_.begin(), cuts_.end(), reducedAt,
                                         [](std::size_t at, const Cut& cut) { return at < cut.reducedAt; });
    return behind == cuts_.begin() ? nullptr : &*std::prev(behind);
}

std::size_t Outline::original(std::size_t reducedAt) const noexcept {
    const Cut* const last = lastBefore(reducedAt);
    if (last == nullptr) return reducedAt;
    const std::size_t behind = reducedAt - last->reducedAt;
    return behind < last->kept ? last->at : last->at + last->size + behind - last->kept;
}

std::optional<std::string_view> Outline::textAt(std::size_t reducedAt) const noexcept {
    const Cut* const last = lastBefore(reducedAt);
    if (last == nullptr || !last->isText || last->reducedAt != reducedAt) return std::nullopt;
    return text_.substr(last->at, last->size);
}

bool takeUnwritable(std::string_view& text, std::string& out) {
    const auto front = static_cast<unsigned char>(text.front());
    const bool isControl = front < 0x20 && front != '\t' && front != '\n' && front != '\r';
    const char* code = text.starts_with(kEscape)          ? "241b"
                       : text.starts_with("\xEF\xBF\xBE") ? "fffe"
                       : text.starts_with("\xEF\xBF\xBF") ? "ffff"
                                                          : nullptr;
    if (!isControl && code == nullptr) return false;
    constexpr char kDigits[] = "0123456789abcdef";
    const char control[] = {'0', '0', kDigits[front >> 4], kDigits[front & 15], '\0'};
    out = std::string(kEscape).append(isControl ? control : code);
    text.remove_prefix(isControl ? 1 : 3);
    return true;
}

}  // namespace nemra::node::svxml
