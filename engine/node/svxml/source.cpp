#include "engine/node/svxml/source.h"

#include <algorithm>
#include <functional>

#include "engine/common/pages.h"
#include "engine/node/encoding/limits.h"
#include "engine/node/encoding/utf8.h"

namespace nemra::node::svxml {

namespace {

constexpr std::size_t kLeastDropped = std::size_t{256} << 10;

}  // namespace

std::string Text::placeOf(std::size_t at) const {
    at = std::min(at, bytes_.size());
    std::size_t lines = 0;
    std::size_t lineStart = 0;
    const auto count = [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            if (bytes_[i] != '\n') continue;
            ++lines;
            lineStart = i + 1;
        }
    };
    std::size_t next = 0;
    for (const Dropped& part : dropped_) {
        if (part.begin >= at) break;
        count(next, part.begin);
        lines += part.lines;
        if (part.lines > 0) lineStart = part.lastLineEnd;
        next = part.end;
    }
    count(next, at);
    return origin_ + ":" + std::to_string(lines + 1) + ":" + std::to_string(at - std::min(at, lineStart) + 1);
}

void Text::drop(std::string_view part) {
    const std::less<const char*> before;
    const char* const end = bytes_.data() + bytes_.size();
    if (!isOurs_ || before(part.data(), bytes_.data()) || !before(part.data(), end)) return;
    const std::span<char> memory = wholePages({const_cast<char*>(part.data()), part.size()});
    if (memory.size() < kLeastDropped) return;
    const std::string_view pages(memory.data(), memory.size());
    const std::size_t begin = static_cast<std::size_t>(pages.data() - bytes_.data());
    const auto lines = static_cast<std::size_t>(std::count(pages.begin(), pages.end(), '\n'));
    dropped_.push_back({begin, begin + pages.size(), lines, lines == 0 ? 0 : begin + pages.rfind('\n') + 1});
    giveBack(memory);
}

ElementText::ElementText(const Source& source, pugi::xml_node element) {
    for (const pugi::xml_node piece : element.children()) {
        if (piece.type() != pugi::node_pcdata && piece.type() != pugi::node_cdata) continue;
        if (whole_.data() == nullptr) {
            whole_ = source.valueOf(piece);
        } else {
            if (joined_.empty()) joined_ = whole_;
            joined_ += source.valueOf(piece);
        }
    }
}

Source::Source(Text& text, std::string_view origin, Unknown unknown)
    : text_(text),
      report_(origin, unknown, [&text](std::size_t at) { return text.placeOf(at); }),
      outline_(checked(text.view())) {
    // Parsing in place writes its ends of text over the markup behind them; one spare byte takes the last.
    std::vector<char>& buffer = outline_.reduced();
    buffer.reserve(buffer.size() + 1);
    constexpr unsigned kOptions = pugi::parse_default | pugi::parse_ws_pcdata_single | pugi::parse_doctype;
    const pugi::xml_parse_result result =
        document_.load_buffer_inplace(buffer.data(), buffer.size(), kOptions, pugi::encoding_utf8);
    if (!result)
        throw Fault{
            outline_.original(static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0))),
            std::string(result.description()) + (outline_.isWhole() ? "" : "; the text ends too early, it may be cut off")};
    checkStructure();
}

std::string_view Source::checked(std::string_view text) {
    if (text.size() > kMaxFileBytes) throw Fault{0, "the text is larger than 2 GiB"};
    const std::size_t at = firstNotText(text);
    if (at < text.size()) throw Fault{at, text[at] == '\0' ? "a zero byte stands in the text" : "the text isn't UTF-8"};
    return text;
}

std::string_view Source::valueOf(pugi::xml_node piece) const {
    const std::string_view value = piece.value();
    const std::vector<char>& buffer = outline_.reduced();
    const std::less<const char*> before;
    if (before(value.data(), buffer.data()) || !before(value.data(), buffer.data() + buffer.size())) return value;
    return outline_.textAt(static_cast<std::size_t>(value.data() - buffer.data())).value_or(value);
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
    const auto isIn = [&](const char* begin, std::size_t size) {
        return !before(character, begin) && before(character, begin + size);
    };
    const std::vector<char>& reduced = outline_.reduced();
    if (isIn(reduced.data(), reduced.size())) return outline_.original(static_cast<std::size_t>(character - reduced.data()));
    const std::string_view whole = text_.view();
    return isIn(whole.data(), whole.size()) ? static_cast<std::size_t>(character - whole.data()) : otherwise;
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
