#include "engine/core/output/table_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <stdexcept>
#include <string_view>

#include "engine/core/output/table_titles.h"
#include "engine/core/result/quantity_unit.h"

namespace nemra::core {

namespace {

class Writer {
public:
    Writer(const TableLayout& layout, Buffer& out) : layout_(layout), out_(out) {}

    void text(std::string_view words) {
        begin();
        if (words.find_first_of("\"\r\n,;\t") == std::string_view::npos) {
            out_ += words;
            return;
        }
        out_ += '"';
        for (const char c : words) {
            if (c == '"') out_ += '"';
            out_ += c;
        }
        out_ += '"';
    }
    void number(double value) {
        begin();
        char* const room = out_.room(40);
        const auto end = layout_.digits > 0
                             ? std::to_chars(room, room + 40, value, std::chars_format::general, layout_.digits).ptr
                             : std::to_chars(room, room + 40, static_cast<float>(value)).ptr;
        if (layout_.decimal != '.') std::replace(room, end, '.', layout_.decimal);
        out_.grow(static_cast<std::size_t>(end - room));
    }
    void count(std::int64_t value) {
        begin();
        char* const room = out_.room(24);
        out_.grow(static_cast<std::size_t>(std::to_chars(room, room + 24, value).ptr - room));
    }
    void endRow() {
        out_ += '\n';
        first_ = true;
    }

private:
    void begin() {
        if (!std::exchange(first_, false)) out_ += layout_.separator;
    }

    const TableLayout& layout_;
    Buffer& out_;
    bool first_ = true;
};

struct Column {
    int channel;
    std::string title;  ///< name and unit
};

std::vector<Column> columnsOf(const Film& film, const TableLayout& layout) {
    std::vector<Column> columns;
    const auto add = [&](std::size_t i) {
        const Channel& channel = film.channels[i];
        columns.push_back({static_cast<int>(i), channel.name + " [" + unitOf(channel, layout.quantity) + "]"});
    };
    if (layout.channels.empty()) {
        for (std::size_t i = 0; i < film.channels.size(); ++i) add(i);
    }
    for (const std::string& name : layout.channels) {
        const auto found =
            std::find_if(film.channels.begin(), film.channels.end(), [&](const Channel& c) { return c.name == name; });
        if (found == film.channels.end()) throw std::runtime_error("there is no channel \"" + name + "\"");
        add(static_cast<std::size_t>(found - film.channels.begin()));
    }
    return columns;
}

void writePixels(Writer& out, const Film& film, const LightView& view, const std::vector<Column>& columns,
                 const TableLayout& layout) {
    out.text("x");
    out.text("y");
    for (const Column& column : columns) out.text(column.title);
    const bool withSampling = layout.withSampling && view.metaChannels > 0;
    if (withSampling) {
        const int reference = referenceChannel(film);
        const Channel& leading = film.channels[reference >= 0 ? static_cast<std::size_t>(reference) : 0];
        out.text("samples");
        out.text("standard error of " + (reference >= 0 ? leading.name : "mean") + " [" + leading.unit + "]");
    }
    out.endRow();
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            out.count(x);
            out.count(y);
            for (const Column& column : columns) out.number(view.at(column.channel, x, y, layout.quantity));
            if (withSampling) {
                const std::size_t pixel = film.pixel(x, y);
                const double samples = view.meta[static_cast<std::size_t>(MetaChannel::spp)][pixel];
                const double variance = view.meta[static_cast<std::size_t>(MetaChannel::variance)][pixel];
                out.count(static_cast<std::int64_t>(samples));
                out.number(samples > 0.0 ? std::sqrt(variance / samples) : 0.0);
            }
            out.endRow();
        }
    }
}

void writeGrid(Writer& out, const LightView& view, const std::vector<Column>& columns, nemra_quantity_t quantity,
               const TableTitles& titles) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (i > 0) out.endRow();
        out.text(columns[i].title);
        out.endRow();
        out.text("y \\ x");
        for (int x = 0; x < view.width; ++x) out.text(titles.column(x));
        out.endRow();
        for (int y = 0; y < view.height; ++y) {
            out.text(titles.row(y));
            for (int x = 0; x < view.width; ++x) out.number(view.at(columns[i].channel, x, y, quantity));
            out.endRow();
        }
    }
}

void writeSummary(Writer& out, const Film& film, const LightView& view, const std::vector<Column>& columns,
                  nemra_quantity_t quantity) {
    for (const char* const title : {"channel", "unit", "mean", "smallest", "largest", "uniformity"}) out.text(title);
    out.endRow();
    for (const Column& column : columns) {
        double sum = 0.0;
        double smallest = std::numeric_limits<double>::infinity();
        double largest = -smallest;
        for (int x = 0; x < view.width; ++x) {
            for (int y = 0; y < view.height; ++y) {
                const double value = view.at(column.channel, x, y, quantity);
                sum += value;
                smallest = std::min(smallest, value);
                largest = std::max(largest, value);
            }
        }
        const double mean = sum / (static_cast<double>(view.width) * view.height);
        const Channel& channel = film.channels[static_cast<std::size_t>(column.channel)];
        out.text(channel.name);
        out.text(unitOf(channel, quantity));
        for (const double value : {mean, smallest, largest, mean != 0.0 ? smallest / mean : 0.0}) out.number(value);
        out.endRow();
    }
}

nemra_quantity_t quantityNamed(std::string_view name) {
    constexpr std::array<std::pair<std::string_view, nemra_quantity_t>, kQuantityCount> names{
        {{"raw", NEMRA_QUANTITY_RAW},
         {"scene_radiance", NEMRA_QUANTITY_SCENE_RADIANCE},
         {"scene_irradiance", NEMRA_QUANTITY_SCENE_IRRADIANCE},
         {"sensor_irradiance", NEMRA_QUANTITY_SENSOR_IRRADIANCE},
         {"sensor_power", NEMRA_QUANTITY_SENSOR_POWER},
         {"sensor_exposure", NEMRA_QUANTITY_SENSOR_EXPOSURE},
         {"bsdf", NEMRA_QUANTITY_COMPUTED_BSDF}}};
    const auto found = std::find_if(names.begin(), names.end(), [&](const auto& pair) { return pair.first == name; });
    return found == names.end() ? NEMRA_QUANTITY_RAW : found->second;
}

std::vector<std::string> namesIn(const std::string& list) {
    std::vector<std::string> names;
    for (std::size_t first = 0; first <= list.size();) {
        const auto end = std::min(list.find(',', first), list.size());
        const auto from = list.find_first_not_of(' ', first);
        if (from < end) {
            const auto to = list.find_last_not_of(' ', end - 1);
            names.push_back(list.substr(from, to - from + 1));
        }
        first = end + 1;
    }
    return names;
}

}  // namespace

Buffer writeTable(const Raw& raw, const TableLayout& layout) {
    const auto film = raw.film();
    const auto view = raw.view();
    const auto& provided = raw.quantities();
    if (std::find(provided.begin(), provided.end(), layout.quantity) == provided.end()) {
        throw std::runtime_error("this result doesn't have that light quantity");
    }
    const auto columns = columnsOf(*film, layout);
    Buffer text;
    Writer out(layout, text);
    switch (layout.rows) {
        case TableLayout::Rows::pixels:
            writePixels(out, *film, *view, columns, layout);
            break;
        case TableLayout::Rows::grid:
            writeGrid(out, *view, columns, layout.quantity, TableTitles(raw));
            break;
        case TableLayout::Rows::summary:
            writeSummary(out, *film, *view, columns, layout.quantity);
            break;
    }
    return text;
}

TableLayout tableLayoutOf(const node::Node& output) {
    TableLayout layout;
    const std::string& rows = output.choice("layout");
    if (rows == "grid") layout.rows = TableLayout::Rows::grid;
    if (rows == "summary") layout.rows = TableLayout::Rows::summary;
    layout.quantity = quantityNamed(output.choice("quantity"));
    layout.channels = namesIn(output.text("channels"));
    layout.digits = output.integer("digits");
    const std::string& separator = output.choice("separator");
    if (separator == "semicolon") {
        layout.separator = ';';
        layout.decimal = ',';
    }
    if (separator == "tab") layout.separator = '\t';
    return layout;
}

}  // namespace nemra::core
