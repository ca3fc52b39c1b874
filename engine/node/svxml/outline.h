/// An svxml text without its long arrays, which are nearly all of it: so that the parser of elements needn't copy them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nemra::node::svxml {

class Outline {
public:
    /// Throws a Fault for text outside of the outermost element. What else is wrong is left to the parser of elements.
    explicit Outline(std::string_view text);

    /// The text with one character in the place of each long text between tags that reads the same without parsing, and with
    /// escaped characters put back. To be parsed in place.
    std::vector<char>& reduced() noexcept { return reduced_; }
    const std::vector<char>& reduced() const noexcept { return reduced_; }
    /// Where a place of the reduced text is in the whole one.
    std::size_t original(std::size_t reducedAt) const noexcept;
    /// The long text that was left out there, if any; it lies in the whole text.
    std::optional<std::string_view> textAt(std::size_t reducedAt) const noexcept;
    /// False if the text ends inside of an element or a tag.
    bool isWhole() const noexcept { return isWhole_; }

private:
    struct Cut {
        std::size_t reducedAt, kept;  // bytes that stand in the reduced text
        std::size_t at, size;         // bytes of the whole text
        bool isText;
    };

    void takeMarkup(std::size_t begin, std::size_t end);
    void takeText(std::size_t begin, std::size_t end);
    void cut(std::string_view by, std::size_t at, std::size_t size, bool isText);
    const Cut* lastBefore(std::size_t reducedAt) const noexcept;

    std::string_view text_;
    std::vector<char> reduced_;
    std::vector<Cut> cuts_;
    bool isWhole_ = false;
};

/// Appends the escape of a character that XML can't hold (XML 1.0, 2.2) or that begins such an escape: SYMBOL FOR ESCAPE (U+241B)
/// and four hexadecimal digits. Takes the character off the front of `text`; false if there is none.
bool takeUnwritable(std::string_view& text, std::string& out);

}  // namespace nemra::node::svxml
