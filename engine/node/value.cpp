#include "engine/node/value.h"

#include <charconv>
#include <cmath>
#include <type_traits>

namespace nemra::node {

namespace {

template <class T>
inline constexpr bool isNumberVector = std::is_same_v<T, std::vector<std::int32_t>> || std::is_same_v<T, std::vector<float>> ||
                                       std::is_same_v<T, std::vector<double>>;

template <class Number>
void append(std::string& text, Number number) {
    char digits[40];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    text.append(digits, end);
}

}  // namespace

bool Value::operator==(const Value& other) const {
    const auto* const mine = std::get_if<std::shared_ptr<const Table>>(&data);
    const auto* const theirs = std::get_if<std::shared_ptr<const Table>>(&other.data);
    if (mine && theirs) return *mine == *theirs || (*mine && *theirs && **mine == **theirs);
    return data == other.data;
}

std::optional<double> toNumber(const Value& value) noexcept {
    if (const auto* const v = std::get_if<double>(&value.data)) return *v;
    if (const auto* const v = std::get_if<float>(&value.data)) return double{*v};
    if (const auto* const v = std::get_if<std::int32_t>(&value.data)) return double{static_cast<double>(*v)};
    if (const auto* const v = std::get_if<std::uint64_t>(&value.data)) {
        const auto number = static_cast<double>(*v);
        if (number < 0x1p64 && static_cast<std::uint64_t>(number) == *v) return number;
    }
    return std::nullopt;
}

nemra_value_type_t typeOf(const Value& value) noexcept {
    return std::visit(
        [](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, bool>) return NEMRA_VALUE_BOOLEAN;
            if constexpr (std::is_same_v<T, std::string>) return NEMRA_VALUE_TEXT;
            if constexpr (std::is_same_v<T, std::int32_t> || std::is_same_v<T, std::vector<std::int32_t>>)
                return NEMRA_VALUE_INT32;
            if constexpr (std::is_same_v<T, std::uint64_t>) return NEMRA_VALUE_UINT64;
            if constexpr (std::is_same_v<T, float> || std::is_same_v<T, std::vector<float>>) return NEMRA_VALUE_FLOAT;
            if constexpr (std::is_same_v<T, double> || std::is_same_v<T, std::vector<double>>) return NEMRA_VALUE_DOUBLE;
            if constexpr (std::is_same_v<T, std::vector<char>>) return NEMRA_VALUE_BINARY;
            return NEMRA_VALUE_NONE;
        },
        value.data);
}

std::size_t sizeOf(const Value& value) noexcept {
    return std::visit(
        [](const auto& v) -> std::size_t {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, std::monostate> || std::is_same_v<T, Color> ||
                          std::is_same_v<T, std::shared_ptr<const Table>>) {
                return 0;
            } else if constexpr (std::is_arithmetic_v<T>) {
                return 1;
            } else {
                return v.size();
            }
        },
        value.data);
}

std::string toText(double number) {
    std::string text;
    append(text, number);
    return text;
}

std::string toText(const Value& value) {
    std::string text;
    std::visit(
        [&](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, bool>) {
                text = v ? "true" : "false";
            } else if constexpr (std::is_arithmetic_v<T>) {
                append(text, v);
            } else if constexpr (std::is_same_v<T, std::string>) {
                text = v;
            } else if constexpr (std::is_same_v<T, std::vector<char>>) {
                text.assign(v.begin(), v.end());
            } else if constexpr (isNumberVector<T>) {
                for (const auto element : v) {
                    if (!text.empty()) text += ' ';
                    append(text, element);
                }
            } else if constexpr (std::is_same_v<T, Color>) {
                text = v.space;
                for (const float coord : v.coords) {
                    text += ' ';
                    append(text, coord);
                }
            } else if constexpr (std::is_same_v<T, std::shared_ptr<const Table>>) {
                if (v) text = "table of " + std::to_string(v->rows) + " rows";
            }
        },
        value.data);
    return text;
}

const Table::Column* Table::find(std::string_view name) const noexcept {
    for (const Column& column : columns) {
        if (column.name == name) return &column;
    }
    return nullptr;
}

std::vector<double> Table::numbers(std::string_view name) const {
    std::vector<double> result;
    if (const Column* const column = find(name)) {
        result.reserve(column->cells.size());
        for (const Value& cell : column->cells)
            result.push_back(toNumber(cell).value_or(std::numeric_limits<double>::quiet_NaN()));
    }
    return result;
}

}  // namespace nemra::node
