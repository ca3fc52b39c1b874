/// A value of a parameter, a cell or a raw slot.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "module/flat/nemra_types.h"

namespace nemra::node {

struct Table;

/// A colour with its named space; `coords` as the space defines them.
struct Color {
    std::string space;
    std::array<float, 3> coords{};
};

struct Value {
    using Data = std::variant<std::monostate, bool, std::int32_t, std::uint64_t, float, double, std::string,
                              std::vector<std::int32_t>, std::vector<float>, std::vector<double>, std::vector<char>, Color,
                              std::shared_ptr<const Table>>;
    Data data;
};

/// Typed columns of equal length.
struct Table {
    struct Column {
        std::string name;
        std::vector<Value> cells;
    };
    std::vector<Column> columns;
    std::size_t rows = 0;

    /// The column of that name, or null.
    const Column* find(std::string_view name) const noexcept;
    /// The numbers of a column as doubles (a cell that is no number counts as NaN); empty without such a column.
    std::vector<double> numbers(std::string_view name) const;
};

}  // namespace nemra::node
