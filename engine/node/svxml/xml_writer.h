/// Indented XML, piece by piece into one string.
#pragma once

#include <string>
#include <string_view>
#include <vector>

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
        for (std::size_t i = 0; i < count; ++i) {
            if (!inlineText_ && i % perLine == 0) {
                newLine(open_.size());
            } else if (i > 0) {
                out_ += ' ';
            }
            appendNumber(out_, first[i]);
        }
        checkSize();
    }
    void close();

    std::string take() && { return std::move(out_); }
    std::size_t depth() const noexcept { return open_.size(); }

private:
    void endTag();
    void newLine(std::size_t depth);
    void escape(std::string_view text, bool inAttribute);
    void checkSize() const;

    std::string out_;
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
