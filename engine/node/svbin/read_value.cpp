#include <algorithm>

#include "engine/node/svbin/read_parts.h"

namespace nemra::node::svbin {

namespace {

template <class Kind, class Stored>
void appendCells(std::vector<Value>& cells, const std::vector<Stored>& numbers) {
    cells.reserve(cells.size() + numbers.size());
    for (const Stored number : numbers) cells.push_back({static_cast<Kind>(number)});
}

void appendRun(FileView& file, std::vector<Value>& cells, const fb::Run& run) {
    appendCells<double>(cells, file.copy(run.reals()));
    appendCells<float>(cells, file.copy(run.singles()));
    appendCells<std::int32_t>(cells, file.copy(run.integers()));
    appendCells<std::uint64_t>(cells, file.copy(run.unsigneds()));
    appendCells<bool>(cells, file.copy(run.booleans()));
    if (run.texts() != nullptr)
        for (const auto* text : *run.texts()) cells.push_back({file.copy(text)});
    cells.resize(cells.size() + file.copy(run.unset()).size());
}

}  // namespace

Value readValue(FileView& file, const fb::Value* value) {
    if (value == nullptr) return {};
    if (const auto boolean = value->boolean()) return {*boolean};
    if (const auto integer = value->integer()) return {std::int32_t{*integer}};
    if (const auto number = value->unsigned_()) return {std::uint64_t{*number}};
    if (const auto single = value->single()) return {*single};
    if (const auto real = value->real()) return {*real};
    if (value->text() != nullptr) return {file.copy(value->text())};
    if (value->integers() != nullptr) return {file.copy(value->integers())};
    if (value->singles() != nullptr) return {file.copy(value->singles())};
    if (value->reals() != nullptr) return {file.copy(value->reals())};
    if (value->bytes() != nullptr) {
        const auto bytes = file.copy(value->bytes());
        return {std::vector<char>(bytes.begin(), bytes.end())};
    }
    if (const auto* const color = value->color()) {
        const fb::Coords& coords = *color->coords();
        return {Color{file.copy(color->space()), {coords.c0(), coords.c1(), coords.c2()}}};
    }
    return {};
}

std::shared_ptr<const Table> readTable(FileView& file, const fb::TableData& table, const ParameterSpec& spec,
                                       const std::string& what) {
    auto read = std::make_shared<Table>();
    if (table.columns() == nullptr) return read;
    bool first = true;
    for (const fb::Column* const column : *table.columns()) {
        const std::string name(file.text(column->name()));
        const auto fail = [&](const std::string& why) { throw Fault{file.offsetOf(column), what + ": " + why}; };
        const bool known = std::any_of(spec.columns.begin(), spec.columns.end(), [&](const auto& c) { return c.name == name; });
        if (!known) {
            file.report().unknown(file.offsetOf(column), what + " has no column '" + name.substr(0, 200) + "'");
            continue;
        }
        if (read->find(name) != nullptr) fail("a second column '" + name + "'");
        std::vector<Value> cells;
        if (column->runs() != nullptr)
            for (const fb::Run* const run : *column->runs()) appendRun(file, cells, *run);
        if (!first && cells.size() != read->rows)
            fail("column '" + name + "' has " + std::to_string(cells.size()) + " cells, the one before it " +
                 std::to_string(read->rows));
        first = false;
        read->rows = cells.size();
        read->columns.push_back({name, std::move(cells)});
    }
    return read;
}

}  // namespace nemra::node::svbin
