/// Indented XML, piece by piece into one buffer.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "engine/common/buffer.h"
#include "engine/node/svxml/numbers.h"

namespace nemra::node::svxml {

class XmlWriter {
public:
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
    /// Numbers, so many in a line.
    template <class Number>
    void numbers(const Number* first, std::size_t count, std::size_t perLine) {
        endTag();
        inlineText_ = count <= perLine;
        for (std::size_t row = 0; row < count; row += perLine) {
            const std::size_t end = std::min(row + perLine, count);
            if (!inlineText_) newLine(open_.size());
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
    void close();

    Buffer take() && { return std::move(out_); }
    std::size_t depth() const noexcept { return open_.size(); }

private:
    void endTag();
    void newLine(std::size_t depth);
    void escape(std::string_view text, bool inAttribute);
    void checkSize() const;

    Buffer out_;
    std::vector<const char*> open_;
    bool inTag_ = false;       // "<name" is written, ">" isn't yet
    bool inlineText_ = false;  // the open element ends on the same line
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
