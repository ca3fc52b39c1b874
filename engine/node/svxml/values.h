/// Values of parameters, cells and raw slots as svxml text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/node/node_class.h"
#include "engine/node/svxml/numbers.h"
#include "engine/node/svxml/source.h"

namespace nemra::node::svxml {

/// A scalar, a text or a vector as text; a colour gives its coordinates. Empty for an unset value.
void appendValue(std::string& out, const Value& value);

/// Appends the words of `text` (which lies in `source`) as numbers. Throws a Fault with the word's place, `what` and its position
/// in the list.
template <class Vector>
void appendNumbers(Vector& numbers, const Source& source, std::string_view text, std::size_t elsewhere, std::string_view what) {
    for (;;) {
        const std::string_view word = takeWord(text);
        if (word.empty()) return;
        typename Vector::value_type number{};
        const NumberFault fault = parseNumber(word, number);
        if (fault == NumberFault::none) {
            numbers.push_back(number);
            continue;
        }
        throw Fault{source.offsetOf(word.data(), elsewhere),
                    std::string(what) + ": '" + std::string(word.substr(0, 40)) + "' at position " +
                        std::to_string(numbers.size()) +
                        (fault == NumberFault::outOfRange ? " is out of the range of its kind of number"
                                                          : " isn't a number of its kind")};
    }
}

/// The words of `text` as numbers, as appendNumbers reads them.
template <class Number>
std::vector<Number> readNumbers(const Source& source, std::string_view text, std::size_t elsewhere, std::string_view what) {
    std::vector<Number> numbers;
    numbers.reserve(countWords(text));  // growing would take three times the memory
    appendNumbers(numbers, source, text, elsewhere, what);
    return numbers;
}

/// What `text` means for a parameter of that description, in the kind of its default. `at` is the text's place, `what` names
/// the parameter in messages. Not for tables and colours.
Value readValue(const Source& source, const ParameterSpec& spec, std::string_view text, std::size_t at, std::string_view what);

/// How the cells of a column of numbers are kept in a table. A caller may have filled it with another kind than the column's own,
/// such as floats where doubles are usual, and finds that kind again.
class CellKind {
public:
    /// The kind that cells of this column have when a file doesn't say any.
    explicit CellKind(const ParameterSpec& column);
    /// The kind of these cells; cells of different kinds count as double.
    CellKind(const ParameterSpec& column, const std::vector<Value>& cells);
    /// By the name that a file says, or empty.
    static std::optional<CellKind> named(std::string_view name);

    std::string_view name() const;
    bool operator==(const CellKind& other) const { return sample_.index() == other.sample_.index(); }
    void append(std::string& out, const Value& cell) const;
    Value read(const Source& source, std::string_view text, std::size_t at, std::string_view what) const;

private:
    explicit CellKind(Value::Data sample) : sample_(std::move(sample)) {}

    Value::Data sample_;
};

/// Contents of a raw slot of that type.
Value readRawData(const Source& source, nemra_raw_data_type_t type, std::string_view text, std::size_t at, std::string_view what);

/// True if text is the form of the cells (so that each one needs its own element).
bool isTextCell(nemra_parameter_type_t type);

/// Word that stands for a cell which was never set.
constexpr std::string_view kUnset = "unset";

}  // namespace nemra::node::svxml
