/// An svxml text taken apart, with the place of every piece of it.
#pragma once

#include <initializer_list>
#include <pugixml.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/node/encoding/report.h"

namespace nemra::node::svxml {

/// Owns the parsed elements. Reports warnings as "origin:line:column".
class Source {
public:
    /// Throws a Fault if the text isn't well-formed, isn't UTF-8, declares a document type, or nests too deep.
    Source(std::span<const char> text, std::string_view origin, Unknown unknown);
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

    /// An attribute that must be there.
    std::string_view required(pugi::xml_node element, const char* attribute) const;
    /// Warns of attributes that aren't among `known`.
    void checkAttributes(pugi::xml_node element, std::initializer_list<std::string_view> known);
    void warnUnknown(pugi::xml_node element);
    /// "true" or "false"; `otherwise` if the attribute isn't there.
    bool flag(pugi::xml_node element, const char* attribute, bool otherwise) const;

private:
    void checkBytes() const;
    void checkStructure();

    std::span<const char> text_;
    Report report_;
    std::vector<char> buffer_;  // parsed in place, so that texts point into it and offsets stay true
    pugi::xml_document document_;
    pugi::xml_node root_;
};

/// "origin:line:column", both from 1; the column counts bytes.
std::string placeOf(std::span<const char> text, std::string_view origin, std::size_t at);

/// The element's own text. It lies in the source, and so has a place, unless a comment or a CDATA section cuts it in pieces.
class ElementText {
public:
    explicit ElementText(pugi::xml_node element);
    std::string_view view() const noexcept { return joined_.empty() ? whole_ : std::string_view(joined_); }

private:
    std::string_view whole_;
    std::string joined_;
};

}  // namespace nemra::node::svxml
