#include <algorithm>
#include <stdexcept>
#include <type_traits>

#include "engine/node/svbin/write_parts.h"

namespace nemra::node::svbin {

namespace {

/// Cells of one kind as an array of it.
template <class T, class Stored = T>
std::vector<Stored> collect(const Value* first, const Value* last) {
    std::vector<Stored> all;
    all.reserve(static_cast<std::size_t>(last - first));
    for (; first != last; ++first) all.push_back(static_cast<Stored>(std::get<T>(first->data)));
    return all;
}

Offset<fb::Run> writeRun(FileBuilder& file, const Value* first, const Value* last) {
    return std::visit(
        [&](const auto& kind) -> Offset<fb::Run> {
            using T = std::decay_t<decltype(kind)>;
            if constexpr (std::is_same_v<T, double>) {
                const auto cells = file.numbers(collect<T>(first, last));
                return fb::CreateRun(file.tables(), cells);
            } else if constexpr (std::is_same_v<T, float>) {
                const auto cells = file.numbers(collect<T>(first, last));
                return fb::CreateRun(file.tables(), 0, cells);
            } else if constexpr (std::is_same_v<T, std::int32_t>) {
                const auto cells = file.numbers(collect<T>(first, last));
                return fb::CreateRun(file.tables(), 0, 0, cells);
            } else if constexpr (std::is_same_v<T, std::uint64_t>) {
                const auto cells = file.numbers(collect<T>(first, last));
                return fb::CreateRun(file.tables(), 0, 0, 0, cells);
            } else if constexpr (std::is_same_v<T, bool>) {
                const auto cells = file.numbers(collect<T, std::uint8_t>(first, last));
                return fb::CreateRun(file.tables(), 0, 0, 0, 0, cells);
            } else if constexpr (std::is_same_v<T, std::string>) {
                const auto cells = file.texts(collect<T>(first, last));
                return fb::CreateRun(file.tables(), 0, 0, 0, 0, 0, cells);
            } else if constexpr (std::is_same_v<T, std::monostate>) {
                const auto cells = file.numbers(std::vector<std::uint8_t>(static_cast<std::size_t>(last - first)));
                return fb::CreateRun(file.tables(), 0, 0, 0, 0, 0, 0, cells);
            } else {
                throw std::logic_error("a cell of a table can't be written: it isn't one number or text");
            }
        },
        first->data);
}

Offset<fb::Column> writeColumn(FileBuilder& file, const Table::Column& column) {
    std::vector<Offset<fb::Run>> runs;
    const Value* const end = column.cells.data() + column.cells.size();
    for (const Value* first = column.cells.data(); first != end;) {
        const Value* const last =
            std::find_if(first, end, [&](const Value& cell) { return cell.data.index() != first->data.index(); });
        runs.push_back(writeRun(file, first, last));
        first = last;
    }
    const auto name = file.word(column.name);
    const auto list = file.list(runs);
    return fb::CreateColumn(file.tables(), name, list);
}

Offset<fb::TableData> writeTable(FileBuilder& file, const Table& table) {
    std::vector<Offset<fb::Column>> columns;
    for (const Table::Column& column : table.columns) columns.push_back(writeColumn(file, column));
    const auto list = file.list(columns);
    return fb::CreateTableData(file.tables(), list);
}

Offset<fb::Color> writeColor(FileBuilder& file, const Color& color) {
    const auto space = file.word(color.space);
    const fb::Coords coords(color.coords[0], color.coords[1], color.coords[2]);
    return fb::CreateColor(file.tables(), space, &coords);
}

/// An empty array is there too, since that is what tells the kind.
template <class Number>
auto present(FileBuilder& file, const std::vector<Number>& numbers) {
    return numbers.empty() ? file.tables().CreateVector(numbers) : file.numbers(numbers);
}

}  // namespace

Offset<fb::Value> writeValue(FileBuilder& file, const Value& value) {
    return std::visit(
        [&](const auto& data) -> Offset<fb::Value> {
            using T = std::decay_t<decltype(data)>;
            const auto with = [&](auto&& add, const auto& piece) {
                fb::ValueBuilder table(file.tables());
                (table.*add)(piece);
                return table.Finish();
            };
            if constexpr (std::is_same_v<T, bool>) {
                return with(&fb::ValueBuilder::add_boolean, data);
            } else if constexpr (std::is_same_v<T, std::int32_t>) {
                return with(&fb::ValueBuilder::add_integer, data);
            } else if constexpr (std::is_same_v<T, std::uint64_t>) {
                return with(&fb::ValueBuilder::add_unsigned_, data);
            } else if constexpr (std::is_same_v<T, float>) {
                return with(&fb::ValueBuilder::add_single, data);
            } else if constexpr (std::is_same_v<T, double>) {
                return with(&fb::ValueBuilder::add_real, data);
            } else if constexpr (std::is_same_v<T, std::string>) {
                return with(&fb::ValueBuilder::add_text, file.text(data));
            } else if constexpr (std::is_same_v<T, std::vector<std::int32_t>>) {
                return with(&fb::ValueBuilder::add_integers, present(file, data));
            } else if constexpr (std::is_same_v<T, std::vector<float>>) {
                return with(&fb::ValueBuilder::add_singles, present(file, data));
            } else if constexpr (std::is_same_v<T, std::vector<double>>) {
                return with(&fb::ValueBuilder::add_reals, present(file, data));
            } else if constexpr (std::is_same_v<T, std::vector<char>>) {
                return with(&fb::ValueBuilder::add_bytes, present(file, std::vector<std::uint8_t>(data.begin(), data.end())));
            } else if constexpr (std::is_same_v<T, Color>) {
                return with(&fb::ValueBuilder::add_color, writeColor(file, data));
            } else if constexpr (std::is_same_v<T, std::shared_ptr<const Table>>) {
                return with(&fb::ValueBuilder::add_table, writeTable(file, data ? *data : Table()));
            } else {
                return {};
            }
        },
        value.data);
}

}  // namespace nemra::node::svbin
