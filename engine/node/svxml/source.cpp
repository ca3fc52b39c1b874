#include "engine/node/svxml/source.h"

#include <algorithm>
#include <functional>

#include "engine/node/encoding/limits.h"
#include "engine/node/encoding/utf8.h"

namespace nemra::node::svxml {

std::string placeOf(std::span<const char> text, std::string_view origin, std::size_t at) {
    at = std::min(at, text.size());
    const auto before = text.first(at);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const auto lineStart = std::find(before.rbegin(), before.rend(), '\n').base();
    const auto column = 1 + (before.end() - lineStart);
    return std::string(origin) + ":" + std::to_string(line) + ":" + std::to_string(column);
}

ElementText::ElementText(pugi::xml_node element) {
    for (const pugi::xml_node piece : element.children()) {
        if (piece.type() != pugi::node_pcdata && piece.type() != pugi::node_cdata) continue;
        if (whole_.data() == nullptr) {
            whole_ = piece.value();
        } else {
            if (joined_.empty()) joined_ = whole_;
            joined_ += piece.value();
        }
    }
}

Source::Source(std::span<const char> text, std::string_view origin, Unknown unknown)
    : text_(text),
      report_(origin, unknown, [text, origin = std::string(origin)](std::size_t at) { return placeOf(text, origin, at); }) {
    checkBytes();
    // Parsing in place writes its ends of text over the markup behind them; one spare byte takes the last.
    buffer_.reserve(text.size() + 1);
    buffer_.assign(text.begin(), text.end());
    constexpr unsigned kOptions = pugi::parse_default | pugi::parse_ws_pcdata_single | pugi::parse_doctype;
    const pugi::xml_parse_result result =
        document_.load_buffer_inplace(buffer_.data(), buffer_.size(), kOptions, pugi::encoding_utf8);
    if (!result) throw Fault{static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0)), result.description()};
    checkStructure();
}

void Source::checkBytes() const {
    if (text_.size() > kMaxFileBytes) throw Fault{0, "the text is larger than 2 GiB"};
    const std::size_t at = firstNotText({text_.data(), text_.size()});
    if (at < text_.size()) throw Fault{at, text_[at] == '\0' ? "a zero byte stands in the text" : "the text isn't UTF-8"};
}

void Source::checkStructure() {
    int depth = 0;
    pugi::xml_node element = document_.first_child();
    for (const pugi::xml_node top : document_.children()) {
        if (top.type() == pugi::node_doctype) throw Fault{offsetOf(top.value(), 0), "a document type declaration isn't allowed"};
        if (top.type() != pugi::node_element) continue;
        if (root_) fail(top, "a second outermost element '" + std::string(top.name()) + "'");
        root_ = top;
    }
    if (!root_) throw Fault{0, "no element"};
    // Walks without recursion, since the depth is what is being checked.
    element = root_;
    for (;;) {
        if (depth > kMaxFileDepth) fail(element, "elements nest deeper than " + std::to_string(kMaxFileDepth));
        if (element.first_child()) {
            element = element.first_child();
            ++depth;
            continue;
        }
        while (element != root_ && !element.next_sibling()) {
            element = element.parent();
            --depth;
        }
        if (element == root_) return;
        element = element.next_sibling();
    }
}

std::size_t Source::offsetOf(pugi::xml_node element) const { return offsetOf(element.name(), 0); }

std::size_t Source::offsetOf(const char* character, std::size_t otherwise) const {
    const std::less<const char*> before;
    const bool inside = !before(character, buffer_.data()) && before(character, buffer_.data() + buffer_.size());
    return inside ? static_cast<std::size_t>(character - buffer_.data()) : otherwise;
}

std::string_view Source::required(pugi::xml_node element, const char* attribute) const {
    const pugi::xml_attribute found = element.attribute(attribute);
    if (!found) fail(element, "element '" + std::string(element.name()) + "' lacks the attribute '" + attribute + "'");
    return found.value();
}

void Source::checkAttributes(pugi::xml_node element, std::initializer_list<std::string_view> known) {
    for (const pugi::xml_attribute attribute : element.attributes()) {
        if (std::find(known.begin(), known.end(), attribute.name()) != known.end()) continue;
        warn(offsetOf(attribute.name(), offsetOf(element)),
             "unknown attribute '" + std::string(attribute.name()) + "' of element '" + element.name() + "', skipped");
    }
}

void Source::warnUnknown(pugi::xml_node element) {
    if (element.type() == pugi::node_element) {
        warn(offsetOf(element), "unknown element '" + std::string(element.name()) + "', skipped");
    } else if (element.type() == pugi::node_pcdata || element.type() == pugi::node_cdata) {
        warn(offsetOf(element.value(), 0), "text where elements are expected, skipped");
    }
}

bool Source::flag(pugi::xml_node element, const char* attribute, bool otherwise) const {
    const pugi::xml_attribute found = element.attribute(attribute);
    if (!found) return otherwise;
    const std::string_view value = found.value();
    if (value != "true" && value != "false")
        throw Fault{offsetOf(found),
                    "attribute '" + std::string(attribute) + "' must be true or false, not '" + std::string(value) + "'"};
    return value == "true";
}

}  // namespace nemra::node::svxml
