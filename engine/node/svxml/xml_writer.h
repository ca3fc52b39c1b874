/// Indented XML, piece by piece into one buffer or out of it.
#pragma once

#include <algorithm>
#include <functional>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/common/buffer.h"
#include "engine/node/encoding/limits.h"
#include "engine/node/svxml/numbers.h"

namespace nemra::node::svxml {

class XmlWriter {
public:
    /// Hands the text out whenever there are kPiece bytes of it, so that it is never there as a whole; what remains is taken in
    /// the end. All of it is, if `handOut` is empty.
    explicit XmlWriter(std::function<void(std::span<const char>)> handOut) : handOut_(std::move(handOut)) {}

    /// <name ... up to the next call that closes the tag
    void open(const char* name);
    void attribute(const char* name, std::string_view value);
    void attribute(const char* name, const char* value) { attribute(name, std::string_view(value)); }
    template <class Number>
    requires std::is_arithmetic_v<Number>
    void attribute(const char* name, Number value) {
        std::string text;
        appendNumber(text, value);
        attribute(name, std::string_view(text));
    }
    /// Text of an element that has no child elements.
    void text(std::string_view text);
    /// Numbers, so many in a line. The lines of a long list aren't indented: blanks would be more than a third of the text.
    template <class Number>
    void numbers(const Number* first, std::size_t count, std::size_t perLine) {
        endTag();
        inlineText_ = count <= perLine;
        const std::size_t depth = count > kMaxIndentedLines * perLine ? 0 : open_.size();
        // At once, since a block that grows from small to large leaves its early places behind in the heap.
        out_.room(std::min(count * (kMaxCharacters<Number> + 1), handOut_ ? kPiece : kMaxFileBytes));
        for (std::size_t row = 0; row < count; row += perLine) {
            const std::size_t end = std::min(row + perLine, count);
            if (!inlineText_) newLine(depth);
            char* const start = out_.room((end - row) * (kMaxDigits + 1));
            char* at = start;
            for (std::size_t i = row; i < end; ++i) {
                if (i > row) *at++ = ' ';
                at = std::to_chars(at, at + kMaxDigits, first[i]).ptr;
            }
            out_.grow(static_cast<std::size_t>(at - start));
            checkSize();
        }
    }
    /// Without room for it, the writer has failed.
    void close() noexcept;

    /// What wasn't handed out. Throws std::bad_alloc if the writer has failed.
    Buffer take() &&;

    static constexpr std::size_t kPiece = std::size_t{16} << 20;  ///< bytes that are handed out at once, or a line more

private:
    static constexpr std::size_t kMaxIndentedLines = 1000;
    /// Of a number's shortest form: sign, point and exponent beside the digits.
    template <class Number>
    static constexpr std::size_t kMaxCharacters =
        std::is_integral_v<Number> ? std::numeric_limits<Number>::digits10 + 2 : std::numeric_limits<Number>::max_digits10 + 7;

    void endTag();
    void newLine(std::size_t depth);
    void escape(std::string_view text, bool inAttribute);
    void checkSize();

    std::function<void(std::span<const char>)> handOut_;
    std::size_t handedOut_ = 0;
    Buffer out_;
    std::vector<const char*> open_;
    bool inTag_ = false;       // "<name" is written, ">" isn't yet
    bool inlineText_ = false;  // the open element ends on the same line
    bool failed_ = false;
};

/// An element that is closed at the end of the block.
class Element {
public:
    Element(XmlWriter& writer, const char* name) : writer_(writer) { writer_.open(name); }
    ~Element() { writer_.close(); }
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

private:
    XmlWriter& writer_;
};

}  // namespace nemra::node::svxml
