/// An svxml text taken apart, with the place of every piece of it.
#pragma once

#include <initializer_list>
#include <pugixml.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/node/encoding/report.h"
#include "engine/node/svxml/outline.h"

namespace nemra::node::svxml {

/// A text whose places have names, also when parts of it are no longer needed.
class Text {
public:
    /// The text has to stay. `isOurs`: its memory may be given back piece by piece, and what it holds then is lost.
    Text(std::span<const char> bytes, std::string_view origin, bool isOurs) : bytes_(bytes), origin_(origin), isOurs_(isOurs) {}

    std::string_view view() const noexcept { return {bytes_.data(), bytes_.size()}; }
    /// "origin:line:column", both from 1; the column counts bytes.
    std::string placeOf(std::size_t at) const;
    /// Gives back the memory of a part that nobody will look at again. Parts come in order.
    void drop(std::string_view part);

private:
    struct Dropped {
        std::size_t begin, end, lines, lastLineEnd;  // lastLineEnd counts if there are lines
    };

    std::span<const char> bytes_;
    std::string origin_;
    bool isOurs_;
    std::vector<Dropped> dropped_;
};

/// Owns the parsed elements.
class Source {
public:
    /// Throws a Fault if the text isn't well-formed, isn't UTF-8, declares a document type, or nests too deep.
    Source(Text& text, std::string_view origin, Unknown unknown);
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    /// The one outermost element.
    pugi::xml_node root() const { return root_; }

    std::size_t offsetOf(pugi::xml_node element) const;
    std::size_t offsetOf(pugi::xml_attribute attribute) const { return offsetOf(attribute.value(), 0); }
    /// Of a character inside a text or an attribute of this source; `otherwise` if it lies elsewhere.
    std::size_t offsetOf(const char* character, std::size_t otherwise) const;

    [[noreturn]] void fail(pugi::xml_node element, std::string text) const { throw Fault{offsetOf(element), std::move(text)}; }
    Report& report() noexcept { return report_; }
    void warn(std::size_t at, std::string_view text) { report_.warn(at, text); }
    /// Says that nobody will look at that text again, which may lie elsewhere.
    void drop(std::string_view text) { text_.drop(text); }
    /// Of a piece of text between tags.
    std::string_view valueOf(pugi::xml_node piece) const;

    /// An attribute that must be there.
    std::string_view required(pugi::xml_node element, const char* attribute) const;
    /// Warns of attributes that aren't among `known`.
    void checkAttributes(pugi::xml_node element, std::initializer_list<std::string_view> known);
    void warnUnknown(pugi::xml_node element);
    /// "true" or "false"; `otherwise` if the attribute isn't there.
    bool flag(pugi::xml_node element, const char* attribute, bool otherwise) const;

private:
    static std::string_view checked(std::string_view text);
    void checkStructure();

    Text& text_;
    Report report_;
    Outline outline_;  // parsed in place, so that texts point into it and offsets stay true
    pugi::xml_document document_;
    pugi::xml_node root_;
};

/// The element's own text. It lies in the source, and so has a place, unless a comment or a CDATA section cuts it in pieces.
class ElementText {
public:
    ElementText() = default;
    ElementText(const Source& source, pugi::xml_node element);
    std::string_view view() const noexcept { return joined_.empty() ? whole_ : std::string_view(joined_); }

private:
    std::string_view whole_;
    std::string joined_;
};

}  // namespace nemra::node::svxml
