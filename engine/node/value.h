/// A value of a parameter, a cell or a raw slot.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "module/flat/nemra_types.h"

namespace nemra::node {

struct Table;

/// A colour with its named space; `coords` as the space defines them.
struct Color {
    std::string space;
    std::array<float, 3> coords{};

    bool operator==(const Color&) const = default;
};

struct Value {
    using Data =
        std::variant<std::monostate, bool, std::int32_t, std::uint64_t, float, double, std::string, std::vector<std::int32_t>,
                     std::vector<float>, std::vector<double>, std::vector<char>, Color, std::shared_ptr<const Table>>;
    Data data;

    bool isEmpty() const noexcept { return data.index() == 0; }
    /// Same kind and same contents; tables are compared cell by cell.
    NEMRA_API bool operator==(const Value& other) const;
};

/// The number in a value that holds one number, exactly; empty for any other kind and for a whole number that a double can't
/// hold.
NEMRA_API std::optional<double> toNumber(const Value& value) noexcept;
/// What a caller sees the value as; a vector has the type of its elements, a colour or a table has none.
NEMRA_API nemra_value_type_t typeOf(const Value& value) noexcept;
/// Elements of a vector, bytes of text or binary, 1 for another scalar, 0 for an empty value.
NEMRA_API std::size_t sizeOf(const Value& value) noexcept;
/// Numbers in the shortest form that reads back equal, vectors with blanks between; whatever the locale of the process is.
NEMRA_API std::string toText(const Value& value);
NEMRA_API std::string toText(double number);

/// Typed columns of equal length.
struct NEMRA_API Table {
    struct Column {
        std::string name;
        std::vector<Value> cells;  ///< `rows` of them; an empty value is a cell that was never set

        bool operator==(const Column&) const = default;
    };
    std::vector<Column> columns;
    std::size_t rows = 0;

    /// The column of that name, or null.
    const Column* find(std::string_view name) const noexcept;
    /// The numbers of a column as doubles (a cell that is no number counts as NaN); empty without such a column.
    std::vector<double> numbers(std::string_view name) const;

    bool operator==(const Table&) const = default;
};

/// Rows that a table may have at most.
inline constexpr std::size_t kMaximumRows = std::size_t{1} << 24;

}  // namespace nemra::node
