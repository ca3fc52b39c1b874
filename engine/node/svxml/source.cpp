#include "engine/node/svxml/source.h"

#include <algorithm>
#include <functional>

#include "engine/common/log.h"
#include "engine/node/svxml/limits.h"

namespace nemra::node::svxml {

namespace {

/// Length of the UTF-8 sequence at the front of `rest`, or 0 if it is damaged, overlong or a surrogate (RFC 3629).
std::size_t utf8Length(std::span<const char> rest) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(rest[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) return 1;
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || length > rest.size()) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80) return 0;
    const unsigned second = byte(1);
    const bool outside = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) || (lead == 0xF0 && second < 0x90) ||
                         (lead == 0xF4 && second > 0x8F);
    return outside ? 0 : length;
}

}  // namespace

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

Source::Source(std::span<const char> text, std::string_view origin) : text_(text), origin_(origin) {
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
    if (text_.size() > kMaxBytes) throw Fault{0, "the text is larger than 2 GiB"};
    for (std::size_t i = 0; i < text_.size();) {
        const std::size_t length = text_[i] == '\0' ? 0 : utf8Length(text_.subspan(i));
        if (length == 0) throw Fault{i, text_[i] == '\0' ? "a zero byte stands in the text" : "the text isn't UTF-8"};
        i += length;
    }
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
        if (depth > kMaxDepth) fail(element, "elements nest deeper than " + std::to_string(kMaxDepth));
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

void Source::warn(std::size_t at, std::string_view text) {
    if (++warnings_ <= kMaxWarnings) log::warning(placeOf(text_, origin_, at), text);
}

void Source::finishWarnings() {
    if (warnings_ > kMaxWarnings) log::warning(origin_, std::to_string(warnings_ - kMaxWarnings) + " further warnings left out");
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
