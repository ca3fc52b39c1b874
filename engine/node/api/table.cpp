// Tables: columns by index, rows by index, cells of values.
#include <limits>

#include "engine/common/text.h"
#include "engine/node/api/opaque.h"
#include "module/flat/nemra_node.h"

using namespace nemra;
using namespace nemra::node;

nemra_table* nemraTableValue_create() {
    return guarded<nemra_table*>("nemraTableValue_create", nullptr, [] { return new nemra_table; });
}

void nemraTableValue_release(nemra_table** table) {
    if (!table) return;
    delete *table;
    *table = nullptr;
}

void nemraTableValue_addColumn(nemra_table* table, const char* name) {
    guarded("nemraTableValue_addColumn", [&] {
        if (!table || table->contents->find(viewOf(name))) return;
        Table& contents = table->writable();
        contents.columns.push_back({std::string(viewOf(name)), std::vector<Value>(contents.rows)});
    });
}

bool nemraTableValue_hasColumn(nemra_table* table, const char* name) { return table && table->contents->find(viewOf(name)); }

std::uint32_t nemraTableValue_columnIndex(nemra_table* table, const char* name) {
    if (!table) return 0;
    const Table::Column* const column = table->contents->find(viewOf(name));
    if (!column) return std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(column - table->contents->columns.data());
}

std::uint32_t nemraTableValue_numRows(nemra_table* table) {
    return table ? static_cast<std::uint32_t>(table->contents->rows) : 0;
}

std::uint32_t nemraTableValue_numColumns(nemra_table* table) {
    return table ? static_cast<std::uint32_t>(table->contents->columns.size()) : 0;
}

void nemraTableValue_resizeRows(nemra_table* table, std::uint32_t rows) {
    guarded("nemraTableValue_resizeRows", [&] {
        if (!table) return;
        if (rows > kMaximumRows) {
            log::warning("table", std::to_string(rows) + " rows are more than the " + std::to_string(kMaximumRows) +
                                      " that a table may have");
            return;
        }
        Table& contents = table->writable();
        for (Table::Column& column : contents.columns) column.cells.resize(rows);
        contents.rows = rows;
    });
}

nemra_value* nemraTableValue_get(nemra_table* table, std::uint32_t column, std::uint32_t row) {
    return guarded<nemra_value*>("nemraTableValue_get", nullptr, [&]() -> nemra_value* {
        if (!table || column >= table->contents->columns.size() || row >= table->contents->rows) return nullptr;
        const auto& cells = table->contents->columns[column].cells;
        return new nemra_value{row < cells.size() ? cells[row] : Value{}, nullptr};
    });
}

bool nemraTableValue_set(nemra_table* table, std::uint32_t column, std::uint32_t row, nemra_value* value) {
    const std::unique_ptr<nemra_value> taken(value);
    return guarded<bool>("nemraTableValue_set", false, [&] {
        if (!table || !taken || column >= table->contents->columns.size() || row >= table->contents->rows) return false;
        Table& contents = table->writable();
        auto& cells = contents.columns[column].cells;
        if (sizeOf(taken->value) > 1 && typeOf(taken->value) != NEMRA_VALUE_TEXT && typeOf(taken->value) != NEMRA_VALUE_BINARY) {
            return false;  // a cell is one value, not a vector
        }
        // The neighbour decides the kind of the column; a caller fills a column from its first row on.
        const std::size_t neighbour = row > 0 ? row - 1 : std::size_t{row} + 1;
        const bool fits = neighbour >= cells.size() || cells[neighbour].isEmpty() ||
                          cells[neighbour].data.index() == taken->value.data.index() ||
                          typeOf(cells[neighbour]) == typeOf(taken->value);
        if (fits) cells[row] = std::move(taken->value);
        return fits;
    });
}
