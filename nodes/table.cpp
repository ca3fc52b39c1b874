#include "nodes/table.h"

#include <algorithm>

#include "module/buffer_order.h"
#include "module/owned_array.h"
#include "nodes/engine_value.h"
#include "nodes/value_bridge.h"

namespace NemraNode::nodes {

namespace {

std::vector<nemra_parameter*> columnParameters(nemra_parameter* parameter) {
    std::vector<nemra_parameter*> columns;
    const std::uint32_t count = nemraParameter_tableColumnParamsSize(parameter);
    for (std::uint32_t i = 0; i < count; ++i) columns.push_back(nemraParameter_tableColumnParam(parameter, i));
    return columns;
}

/// Cells of one column. A column is of one type as a rule, but each cell says its own: a buffer is made when its type first
/// comes.
class ColumnReader {
public:
    explicit ColumnReader(std::uint32_t rows) : rows_(rows) {}

    void store(std::uint32_t row, nemra_value* cell) {
        last_ = nemraValue_type(cell);
        switch (last_) {
            case NEMRA_VALUE_TEXT:
            case NEMRA_VALUE_LINK:
                at(texts_, row) = readText(cell);
                break;
            case NEMRA_VALUE_BOOLEAN:
                at(booleans_, row) = nemraValue_get_bool(cell);
                break;
            case NEMRA_VALUE_INT32:
                storeFirst(integers_, row, cell, nemraValue_get_int32);
                break;
            case NEMRA_VALUE_UINT64:
                storeFirst(naturals_, row, cell, nemraValue_get_uint64);
                break;
            case NEMRA_VALUE_FLOAT:
                storeFirst(floats_, row, cell, nemraValue_get_float);
                break;
            case NEMRA_VALUE_DOUBLE:
                storeFirst(doubles_, row, cell, nemraValue_get_double);
                break;
            case NEMRA_VALUE_BINARY: {
                const std::vector<char> bytes = readBlock(cell, nemraValue_get_binary);
                at(binaries_, row).assign(bytes.begin(), bytes.end());
                break;
            }
            default:
                break;
        }
    }

    /// The buffer of the last cell's type as a Python column; null if that cell had none.
    py::object take() {
        switch (last_) {
            case NEMRA_VALUE_TEXT:
            case NEMRA_VALUE_LINK:
                return py::cast(texts_);
            case NEMRA_VALUE_BOOLEAN: {
                py::array_t<bool> column(static_cast<py::ssize_t>(rows_));
                std::copy(booleans_.begin(), booleans_.end(), column.mutable_data());
                return column;
            }
            case NEMRA_VALUE_INT32:
                return Nemra::ownedArray(std::move(integers_));
            case NEMRA_VALUE_UINT64:
                return Nemra::ownedArray(std::move(naturals_));
            case NEMRA_VALUE_FLOAT:
                return Nemra::ownedArray(std::move(floats_));
            case NEMRA_VALUE_DOUBLE:
                return Nemra::ownedArray(std::move(doubles_));
            case NEMRA_VALUE_BINARY: {
                py::list column;
                for (const std::string& bytes : binaries_) column.append(py::bytes(bytes));
                return column;
            }
            default:
                return {};
        }
    }

private:
    template <class T>
    typename std::vector<T>::reference at(std::vector<T>& buffer, std::uint32_t row) {
        if (buffer.empty()) buffer.resize(rows_);
        return buffer[row];
    }
    template <class T>
    void storeFirst(std::vector<T>& buffer, std::uint32_t row, nemra_value* cell, const T* (*read)(nemra_value*)) {
        T& element = at(buffer, row);
        element = readFirst(cell, read, element);
    }

    std::uint32_t rows_;
    std::int32_t last_ = NEMRA_VALUE_NONE;
    std::vector<std::string> texts_;
    std::vector<std::string> binaries_;
    std::vector<bool> booleans_;
    std::vector<std::int32_t> integers_;
    std::vector<std::uint64_t> naturals_;
    std::vector<float> floats_;
    std::vector<double> doubles_;
};

/// As UTF-8; UnicodeEncodeError for a text that has none.
std::string textOf(py::handle text) {
    Py_ssize_t size = 0;
    const char* bytes = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
    if (!bytes) throw py::error_already_set();
    return {bytes, static_cast<std::size_t>(size)};
}

bool setListColumn(const py::list& list, std::uint32_t column, std::uint32_t rows, nemra_table* table) {
    const auto size = static_cast<std::uint32_t>(list.size());
    if (rows == 0) {
        nemraTableValue_resizeRows(table, size);
    } else if (rows != size) {
        py::print("[list] Numbers of rows in columns differs", rows, size);
        return false;
    }
    const py::object first = list[0];
    const bool binary = py::isinstance<py::bytes>(first);
    if (!binary && !py::isinstance<py::str>(first)) {
        py::print("In column", column,
                  ".If you want to pass an array of bool or numbers (float,double, int, ...), please use a numpy array instead");
        return false;
    }
    for (std::uint32_t row = 0; row < size; ++row) {
        const py::object cell = list[row];
        if (binary ? !py::isinstance<py::bytes>(cell) : !py::isinstance<py::str>(cell)) {
            py::print("A given list mixes types, which is not allowed");
            return false;
        }
        const std::string text = binary ? std::string(py::reinterpret_borrow<py::bytes>(cell)) : textOf(cell);
        nemra_value* value = binary ? nemraValue_create_vec_char(text.data(), static_cast<int>(text.size()))
                                    : nemraValue_create_c_str(text.c_str());
        if (!nemraTableValue_set(table, column, row, value)) {
            py::print("Can't set a value in the table");
            return false;
        }
    }
    return true;
}

template <class T, class Make>
bool setCells(const py::array& array, std::uint32_t column, nemra_table* table, Make make) {
    const std::vector<T> cells = Nemra::inBufferOrder(py::reinterpret_borrow<py::array_t<T>>(array), array.shape(0));
    for (std::size_t row = 0; row < cells.size(); ++row) {
        if (!nemraTableValue_set(table, column, static_cast<std::uint32_t>(row), make(cells[row]))) {
            py::print("Error when setting column values");
            return false;
        }
    }
    return true;
}

bool setArrayColumn(py::array array, std::uint32_t column, std::uint32_t rows, nemra_table* table) {
    const auto size = static_cast<std::uint32_t>(array.shape(0));
    if (rows == 0) {
        nemraTableValue_resizeRows(table, size);
    } else if (rows != size) {
        py::print("Numbers of rows in columns differs", rows, "!=", size);
        return false;
    }
    const auto type = array.dtype().attr("name").cast<std::string>();
    if (!array.dtype().attr("isnative").cast<bool>()) {  // the name says nothing of the byte order
        array = array.attr("astype")(array.dtype().attr("newbyteorder")("="));
    }
    // Integers are 32-bit in the engine, so the wider ones keep their low half.
    const auto makeInteger = [](auto number) { return nemraValue_create_int32(static_cast<std::int32_t>(number)); };
    if (type == "int64") return setCells<std::int64_t>(array, column, table, makeInteger);
    if (type == "int32") return setCells<std::int32_t>(array, column, table, makeInteger);
    if (type == "uint64") return setCells<std::uint64_t>(array, column, table, nemraValue_create_uint64);
    if (type == "uint32") return setCells<std::uint32_t>(array, column, table, makeInteger);
    if (type == "float32") return setCells<float>(array, column, table, nemraValue_create_float);
    if (type == "float64") return setCells<double>(array, column, table, nemraValue_create_double);
    if (type == "bool") return setCells<bool>(array, column, table, nemraValue_create_bool);
    py::print("This numpy type", type, "is not handle");
    py::print("In column", column,
              ".If you want to pass an array of string or bytes, please use a list instead of a numpy array");
    return false;
}

/// The first column that comes fixes the number of rows. An object that is neither list nor array leaves the column empty.
bool setTableColumn(py::handle object, std::uint32_t column, nemra_table* table) {
    const std::uint32_t rows = nemraTableValue_numRows(table);
    if (py::isinstance<py::list>(object)) return setListColumn(py::reinterpret_borrow<py::list>(object), column, rows, table);
    if (py::isinstance<py::array>(object)) return setArrayColumn(py::reinterpret_borrow<py::array>(object), column, rows, table);
    return true;
}

bool setColumns(const py::dict& columns, nemra_table* table) {
    for (const auto& [key, column] : columns) {
        if (!py::isinstance<py::str>(key)) continue;
        const std::string name = textOf(key);
        if (!nemraTableValue_hasColumn(table, name.c_str())) {
            py::print(key, "is not a valid column name for this parameter");
            return false;
        }
        if (!setTableColumn(column, nemraTableValue_columnIndex(table, name.c_str()), table)) return false;
    }
    return true;
}

/// The new table, given back unless it was completed.
class LocalTable {
public:
    LocalTable() : table_(nemraTableValue_create()) {}
    LocalTable(const LocalTable&) = delete;
    LocalTable& operator=(const LocalTable&) = delete;
    ~LocalTable() {
        if (table_) nemraTableValue_release(&table_);
    }
    nemra_table* get() const { return table_; }
    nemra_table* take() { return std::exchange(table_, nullptr); }

private:
    nemra_table* table_;
};

}  // namespace

py::dict readTable(nemra_parameter* parameter) {
    const std::vector<nemra_parameter*> columns = columnParameters(parameter);
    nemra_table* table = nemraParameter_tableValues(parameter);
    py::dict result;
    const std::uint32_t rows = nemraTableValue_numRows(table);
    for (std::uint32_t column = 0; column < nemraTableValue_numColumns(table) && column < columns.size(); ++column) {
        ColumnReader reader(rows);
        for (std::uint32_t row = 0; row < rows; ++row) {
            const OwnedValue cell(nemraTableValue_get(table, column, row));
            reader.store(row, cell.get());
        }
        if (const py::object cells = reader.take()) result[py::str(std::string(nemraParameter_name(columns[column])))] = cells;
    }
    return result;
}

bool writeTable(const Node& node, const std::string& name, const py::dict& columns) {
    const std::vector<nemra_parameter*> schema = columnParameters(node.findParameter(name, ""));
    LocalTable table;
    for (nemra_parameter* column : schema) {
        nemraTableValue_addColumn(table.get(), std::string(nemraParameter_name(column)).c_str());
    }
    if (!setColumns(columns, table.get())) return false;
    return setParameter(node, name, nemraValue_create_table(table.take()));
}

}  // namespace NemraNode::nodes
