#include "engine/node/svxml/xml_writer.h"

#include <new>
#include <stdexcept>

#include "engine/node/svxml/outline.h"

namespace nemra::node::svxml {

void XmlWriter::open(const char* name) {
    if (open_.size() > kMaxFileDepth) throw std::length_error("nodes nest too deep to be written");
    endTag();
    if (handedOut_ + out_.size() > 0) newLine(open_.size());
    out_ += '<';
    out_ += name;
    open_.push_back(name);
    inTag_ = true;
    inlineText_ = false;
    checkSize();
}

void XmlWriter::attribute(const char* name, std::string_view value) {
    out_ += ' ';
    out_ += name;
    out_ += "=\"";
    escape(value, true);
    out_ += '"';
}

void XmlWriter::text(std::string_view text) {
    endTag();
    inlineText_ = true;
    escape(text, false);
    checkSize();
}

void XmlWriter::close() noexcept try {
    const char* const name = open_.back();
    open_.pop_back();
    if (inTag_) {
        out_ += "/>";
    } else {
        if (!inlineText_) newLine(open_.size());
        out_ += "</";
        out_ += name;
        out_ += '>';
    }
    inTag_ = false;
    inlineText_ = false;
    if (open_.empty()) out_ += '\n';
} catch (const std::bad_alloc&) {
    failed_ = true;
}

Buffer XmlWriter::take() && {
    if (failed_) throw std::bad_alloc();
    return std::move(out_);
}

void XmlWriter::endTag() {
    if (inTag_) out_ += '>';
    inTag_ = false;
}

void XmlWriter::newLine(std::size_t depth) {
    out_ += '\n';
    out_.append(4 * depth, ' ');
}

void XmlWriter::escape(std::string_view text, bool inAttribute) {
    std::string unwritable;
    while (!text.empty()) {
        if (takeUnwritable(text, unwritable)) {
            out_ += unwritable;
            continue;
        }
        const char c = text.front();
        text.remove_prefix(1);
        switch (c) {
            case '&':
                out_ += "&amp;";
                break;
            case '<':
                out_ += "&lt;";
                break;
            case '>':
                out_ += "&gt;";
                break;
            case '"':
                out_ += inAttribute ? "&quot;" : "\"";
                break;
            default:
                // Readers turn line ends into blanks inside attributes, and \r into \n everywhere, unless they are written as
                // numbers.
                if (c == '\r' || (inAttribute && (c == '\n' || c == '\t'))) {
                    out_ += "&#" + std::to_string(static_cast<int>(c)) + ";";
                } else {
                    out_ += c;
                }
        }
    }
}

void XmlWriter::checkSize() {
    if (handedOut_ + out_.size() > kMaxFileBytes) throw std::length_error("the text would be larger than 2 GiB");
    if (!handOut_ || out_.size() < kPiece) return;
    handOut_(out_.bytes());
    handedOut_ += out_.size();
    out_.clear();
}

}  // namespace nemra::node::svxml
