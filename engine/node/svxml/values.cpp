#include "engine/node/svxml/values.h"

#include <type_traits>
#include <utility>

#include "engine/node/svxml/base64.h"

namespace nemra::node::svxml {

namespace {

template <class T>
constexpr bool kIsNumber = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

template <class Number>
Number readNumber(const Source& source, std::string_view text, std::size_t at, std::string_view what) {
    const auto numbers = readNumbers<Number>(source, text, at, what);
    if (numbers.size() != 1)
        throw Fault{at, std::string(what) + ": one number expected, " + std::to_string(numbers.size()) + " found"};
    return numbers.front();
}

bool readBoolean(std::string_view text, std::size_t at, std::string_view what) {
    if (text != "true" && text != "false")
        throw Fault{at, std::string(what) + ": true or false expected, not '" + std::string(text.substr(0, 40)) + "'"};
    return text == "true";
}

/// The alternative that values of this kind are kept in when the default doesn't tell.
Value::Data kindOf(const ParameterSpec& spec) {
    if (!std::holds_alternative<std::monostate>(spec.defaultValue.data)) return spec.defaultValue.data;
    switch (spec.type) {
        case NEMRA_PARAMETER_REAL:
            return 0.0;
        case NEMRA_PARAMETER_INTEGER:
            return std::int32_t{0};
        case NEMRA_PARAMETER_BOOLEAN:
            return false;
        case NEMRA_PARAMETER_VECTOR:
        case NEMRA_PARAMETER_DIRECTION:
            return std::vector<double>{};
        case NEMRA_PARAMETER_MATRIX2:
        case NEMRA_PARAMETER_MATRIX3:
            return std::vector<float>{};
        default:
            return std::string{};
    }
}

std::vector<char> readBytes(std::string_view text, std::size_t at, std::string_view what) {
    std::vector<char> bytes;
    if (!fromBase64(text, bytes)) throw Fault{at, std::string(what) + ": damaged base64 text"};
    return bytes;
}

}  // namespace

void appendValue(std::string& out, const Value& value) {
    const auto appendAll = [&out](const auto& numbers) {
        bool first = true;
        for (const auto number : numbers) {
            if (!first) out += ' ';
            first = false;
            appendNumber(out, number);
        }
    };
    std::visit(
        [&](const auto& data) {
            using T = std::decay_t<decltype(data)>;
            if constexpr (std::is_same_v<T, bool>) {
                out += data ? "true" : "false";
            } else if constexpr (kIsNumber<T>) {
                appendNumber(out, data);
            } else if constexpr (std::is_same_v<T, std::string>) {
                out += data;
            } else if constexpr (std::is_same_v<T, std::vector<char>>) {
                out += toBase64({data.data(), data.size()});
            } else if constexpr (std::is_same_v<T, Color>) {
                appendAll(data.coords);
            } else if constexpr (std::is_same_v<T, std::vector<std::int32_t>> || std::is_same_v<T, std::vector<float>> ||
                                 std::is_same_v<T, std::vector<double>>) {
                appendAll(data);
            }
        },
        value.data);
}

namespace {

Value readKind(const Value::Data& sample, const Source& source, std::string_view text, std::size_t at, std::string_view what) {
    return std::visit(
        [&](const auto& kind) -> Value {
            using T = std::decay_t<decltype(kind)>;
            if constexpr (std::is_same_v<T, bool>) {
                return {readBoolean(text, at, what)};
            } else if constexpr (kIsNumber<T>) {
                return {readNumber<T>(source, text, at, what)};
            } else if constexpr (std::is_same_v<T, std::vector<std::int32_t>> || std::is_same_v<T, std::vector<float>> ||
                                 std::is_same_v<T, std::vector<double>>) {
                return {readNumbers<typename T::value_type>(source, text, at, what)};
            } else if constexpr (std::is_same_v<T, std::vector<char>>) {
                return {readBytes(text, at, what)};
            } else {
                return {std::string(text)};
            }
        },
        sample);
}

constexpr std::string_view kKindNames[] = {"", "boolean", "int32", "uint64", "float", "double"};

}  // namespace

Value readValue(const Source& source, const ParameterSpec& spec, std::string_view text, std::size_t at, std::string_view what) {
    return readKind(kindOf(spec), source, text, at, what);
}

CellKind::CellKind(const ParameterSpec& column) : sample_(kindOf(column)) {}

CellKind::CellKind(const ParameterSpec& column, const std::vector<Value>& cells) : CellKind(column) {
    bool first = true;
    for (const Value& cell : cells) {
        if (cell.isEmpty() || (!first && cell.data.index() == sample_.index())) continue;
        sample_ = first ? cell.data : Value::Data(0.0);
        if (!std::exchange(first, false)) return;
    }
}

std::optional<CellKind> CellKind::named(std::string_view name) {
    const Value::Data samples[] = {false, std::int32_t{0}, std::uint64_t{0}, 0.0F, 0.0};
    for (const Value::Data& sample : samples)
        if (kKindNames[sample.index()] == name) return CellKind(sample);
    return std::nullopt;
}

std::string_view CellKind::name() const { return sample_.index() < std::size(kKindNames) ? kKindNames[sample_.index()] : ""; }

void CellKind::append(std::string& out, const Value& cell) const {
    if (cell.data.index() == sample_.index()) return appendValue(out, cell);
    const auto* const flag = std::get_if<bool>(&cell.data);
    appendNumber(out, flag != nullptr ? double{*flag ? 1.0 : 0.0} : toNumber(cell).value_or(0.0));
}

Value CellKind::read(const Source& source, std::string_view text, std::size_t at, std::string_view what) const {
    return readKind(sample_, source, text, at, what);
}

Value readRawData(const Source& source, nemra_raw_data_type_t type, std::string_view text, std::size_t at,
                  std::string_view what) {
    switch (type) {
        case NEMRA_RAW_DATA_INDEX:
        case NEMRA_RAW_DATA_INT32:
            return {readNumbers<std::int32_t>(source, text, at, what)};
        case NEMRA_RAW_DATA_FLOAT:
            return {readNumbers<float>(source, text, at, what)};
        case NEMRA_RAW_DATA_DOUBLE:
            return {readNumbers<double>(source, text, at, what)};
        case NEMRA_RAW_DATA_BINARY:
            return {readBytes(text, at, what)};
        default:
            return {std::string(text)};
    }
}

bool isTextCell(nemra_parameter_type_t type) {
    return type == NEMRA_PARAMETER_TEXT || type == NEMRA_PARAMETER_FILE || type == NEMRA_PARAMETER_LINK ||
           type == NEMRA_PARAMETER_INFO || type == NEMRA_PARAMETER_CHOICE;
}

}  // namespace nemra::node::svxml
