#include <algorithm>
#include <cmath>
#include <optional>

#include "engine/node/color.h"
#include "engine/node/node_class.h"

namespace nemra::node {

namespace {

std::string withUnit(double number, const std::string& unit) {
    return unit.empty() ? toText(number) : toText(number) + ' ' + unit;
}

bool inRange(const ParameterSpec& spec, double number, std::string& why) {
    if (!std::isfinite(number)) {
        why = std::isnan(number) ? "is not a number" : "is not finite";
        return false;
    }
    if (number < spec.minimum) {
        why = withUnit(number, spec.unit) + " is below the least allowed value, " + withUnit(spec.minimum, spec.unit);
        return false;
    }
    if (number > spec.maximum) {
        why = withUnit(number, spec.unit) + " is above the largest allowed value, " + withUnit(spec.maximum, spec.unit);
        return false;
    }
    return true;
}

bool acceptReal(const ParameterSpec& spec, Value& value, std::string& why) {
    const auto number = toNumber(value);
    if (!number) {
        why = "takes a real number";
        return false;
    }
    if (!inRange(spec, *number, why)) return false;
    value.data = *number;
    return true;
}

bool acceptInteger(const ParameterSpec& spec, Value& value, std::string& why) {
    const auto number = toNumber(value);
    if (!number || *number != std::trunc(*number)) {  // also for a NaN
        why = "takes a whole number";
        return false;
    }
    if (!inRange(spec, *number, why)) return false;
    if (std::fabs(*number) > 2147483647.0) {
        why = toText(*number) + " does not fit into 32 bits";
        return false;
    }
    const auto integer = static_cast<std::int32_t>(*number);
    if (!spec.allowed.empty() && std::find(spec.allowed.begin(), spec.allowed.end(), integer) == spec.allowed.end()) {
        why = std::to_string(integer) + " is none of";
        for (const std::int32_t one : spec.allowed) why += ' ' + std::to_string(one);
        return false;
    }
    value.data = integer;
    return true;
}

/// The numbers of a vector value of any element kind; empty for another kind.
std::optional<std::vector<double>> numbersOf(const Value& value) {
    if (const auto* const v = std::get_if<std::vector<double>>(&value.data)) return *v;
    if (const auto* const v = std::get_if<std::vector<float>>(&value.data)) return std::vector<double>(v->begin(), v->end());
    if (const auto* const v = std::get_if<std::vector<std::int32_t>>(&value.data))
        return std::vector<double>(v->begin(), v->end());
    return std::nullopt;
}

bool acceptNumbers(const ParameterSpec& spec, Value& value, std::size_t count, std::string& why) {
    const auto numbers = numbersOf(value);
    if (!numbers || numbers->size() != count) {
        why = "takes " + std::to_string(count) + " numbers";
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::string reason;
        if (!inRange(spec, (*numbers)[i], reason)) {
            why = "component " + std::to_string(i) + ": " + reason;
            return false;
        }
    }
    if (spec.type == NEMRA_PARAMETER_DIRECTION &&
        std::all_of(numbers->begin(), numbers->end(), [](double n) { return n == 0.0; })) {
        why = "a direction must not be zero";
        return false;
    }
    if (spec.type == NEMRA_PARAMETER_MATRIX2 || spec.type == NEMRA_PARAMETER_MATRIX3) {
        value.data = std::vector<float>(numbers->begin(), numbers->end());
    } else {
        value.data = *numbers;
    }
    return true;
}

bool acceptText(Value& value, std::string& why) {
    if (std::holds_alternative<std::string>(value.data)) return true;
    why = "takes a text";
    return false;
}

bool acceptBoolean(Value& value, std::string& why) {
    if (std::holds_alternative<bool>(value.data)) return true;
    const auto* const integer = std::get_if<std::int32_t>(&value.data);
    if (integer && (*integer == 0 || *integer == 1)) {
        value.data = *integer == 1;
        return true;
    }
    why = "takes true or false";
    return false;
}

bool acceptChoice(const ParameterSpec& spec, const Value& value, std::string& why) {
    const auto* const name = std::get_if<std::string>(&value.data);
    if (name && findOption(spec, *name)) return true;
    why = (name ? "'" + *name + "' is none of its options:" : "takes the name of an option:");
    for (const OptionSpec& option : spec.options) why += ' ' + option.name;
    return false;
}

bool acceptColor(const ParameterSpec& spec, const Value& value, std::string& why) {
    const auto* const color = std::get_if<Color>(&value.data);
    if (!color) {
        why = "takes a colour";
        return false;
    }
    if (!findColorSpace(color->space)) {
        why = "'" + color->space + "' is none of the colour spaces " + colorSpaceNames();
        return false;
    }
    return std::all_of(color->coords.begin(), color->coords.end(), [&](float coord) { return inRange(spec, coord, why); });
}

/// A cell is kept in the kind in which it came, so that a caller reads the element type back that was written.
bool acceptCell(const ParameterSpec& column, const Value& cell, std::string& why) {
    if (cell.isEmpty()) return true;
    if (column.type == NEMRA_PARAMETER_REAL) {  // most cells: without a copy
        const auto number = toNumber(cell);
        if (number && *number >= column.minimum && *number <= column.maximum && std::isfinite(*number)) return true;
    }
    Value tried = cell;
    return acceptValue(column, tried, why);
}

bool acceptColumn(const ParameterSpec& column, const Table::Column& source, std::size_t rows, std::string& why) {
    if (source.cells.size() != rows) {
        why = "column '" + column.name + "' has " + std::to_string(source.cells.size()) + " rows, the table " +
              std::to_string(rows);
        return false;
    }
    for (std::size_t row = 0; row < rows; ++row) {
        std::string reason;
        if (!acceptCell(column, source.cells[row], reason)) {
            why = "column '" + column.name + "', row " + std::to_string(row) + ": " + reason;
            return false;
        }
    }
    return true;
}

/// The same columns in the order of the description; one that isn't given is empty.
std::shared_ptr<const Table> inOrderOf(const ParameterSpec& spec, const Table& given) {
    auto table = std::make_shared<Table>();
    table->rows = given.rows;
    for (const ParameterSpec& column : spec.columns) {
        const Table::Column* const source = given.find(column.name);
        table->columns.push_back({column.name, source ? source->cells : std::vector<Value>(given.rows)});
    }
    return table;
}

bool acceptTable(const ParameterSpec& spec, Value& value, std::string& why) {
    const auto* const held = std::get_if<std::shared_ptr<const Table>>(&value.data);
    if (!held || !*held) {
        why = "takes a table";
        return false;
    }
    const Table& given = **held;
    if (given.rows > kMaximumRows) {
        why = std::to_string(given.rows) + " rows are more than the " + std::to_string(kMaximumRows) + " that a table may have";
        return false;
    }
    for (const ParameterSpec& column : spec.columns) {
        const Table::Column* const source = given.find(column.name);
        if (source && !acceptColumn(column, *source, given.rows, why)) return false;
    }
    for (std::size_t i = 0; i < given.columns.size(); ++i) {
        const std::string& name = given.columns[i].name;
        const bool known =
            std::any_of(spec.columns.begin(), spec.columns.end(), [&](const auto& column) { return column.name == name; });
        if (!known || given.find(name) != &given.columns[i]) {
            why = known ? "column '" + name + "' comes twice" : "has no column '" + name + "'";
            return false;
        }
    }
    const bool isAsDescribed =
        std::equal(given.columns.begin(), given.columns.end(), spec.columns.begin(), spec.columns.end(),
                   [](const auto& column, const auto& described) { return column.name == described.name; });
    if (!isAsDescribed) value.data = inOrderOf(spec, given);
    return true;
}

}  // namespace

bool acceptValue(const ParameterSpec& parameter, Value& value, std::string& why) {
    switch (parameter.type) {
        case NEMRA_PARAMETER_REAL:
            return acceptReal(parameter, value, why);
        case NEMRA_PARAMETER_INTEGER:
            return acceptInteger(parameter, value, why);
        case NEMRA_PARAMETER_INFO:
        case NEMRA_PARAMETER_TEXT:
        case NEMRA_PARAMETER_FILE:
        case NEMRA_PARAMETER_LINK:
            return acceptText(value, why);
        case NEMRA_PARAMETER_BOOLEAN:
            return acceptBoolean(value, why);
        case NEMRA_PARAMETER_VECTOR:
        case NEMRA_PARAMETER_DIRECTION:
            return acceptNumbers(parameter, value, 3, why);
        case NEMRA_PARAMETER_CHOICE:
            return acceptChoice(parameter, value, why);
        case NEMRA_PARAMETER_TABLE:
            return acceptTable(parameter, value, why);
        case NEMRA_PARAMETER_COLOR:
            return acceptColor(parameter, value, why);
        case NEMRA_PARAMETER_MATRIX2:
            return acceptNumbers(parameter, value, 4, why);
        case NEMRA_PARAMETER_MATRIX3:
            return acceptNumbers(parameter, value, 9, why);
        case NEMRA_PARAMETER_NONE:
            break;
    }
    why = "takes no value";
    return false;
}

}  // namespace nemra::node
