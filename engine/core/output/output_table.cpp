// Numbers as CSV, with names and units in the first row.
#include <algorithm>
#include <array>
#include <stdexcept>

#include "engine/core/output/channel_values.h"
#include "engine/core/output/csv.h"
#include "engine/core/output/document.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {
namespace {

std::string heading(const Plane& channel) {
    return channel.unit.empty() ? channel.name : channel.name + " [" + channel.unit + "]";
}

/// The channels that the text names, with commas between, in its order; all of the sensor's for an empty text.
std::vector<const Plane*> chosenChannels(const ChannelValues& values, const std::string& names) {
    std::vector<const Plane*> chosen;
    if (names.empty()) {
        for (const Plane& channel : values.channels) chosen.push_back(&channel);
        return chosen;
    }
    for (std::size_t from = 0; from <= names.size();) {
        const std::size_t comma = std::min(names.find(',', from), names.size());
        std::string name = names.substr(from, comma - from);
        name.erase(0, name.find_first_not_of(' '));
        name.erase(name.find_last_not_of(' ') + 1);
        const Plane* const channel = values.find(name);
        if (!channel || name.empty()) throw std::runtime_error("there is no channel \"" + name + "\"");
        chosen.push_back(channel);
        from = comma + 1;
    }
    return chosen;
}

void writePixels(CsvText& csv, const ChannelValues& values, const std::vector<const Plane*>& channels) {
    csv.cell("x").cell("y");
    for (const Plane* const channel : channels) csv.cell(heading(*channel));
    csv.endLine();
    for (int y = 0; y < values.height; ++y) {
        for (int x = 0; x < values.width; ++x) {
            csv.cell(std::to_string(x)).cell(std::to_string(y));
            const std::size_t pixel = std::size_t(y) * std::size_t(values.width) + std::size_t(x);
            for (const Plane* const channel : channels) csv.cell(channel->values[pixel]);
            csv.endLine();
        }
    }
}

void writeGrids(CsvText& csv, const ChannelValues& values, const std::vector<const Plane*>& channels) {
    for (const Plane* const channel : channels) {
        csv.cell(heading(*channel));
        for (int x = 0; x < values.width; ++x) csv.cell(std::to_string(x));
        csv.endLine();
        for (int y = 0; y < values.height; ++y) {
            csv.cell(std::to_string(y));
            for (int x = 0; x < values.width; ++x) {
                csv.cell(channel->values[std::size_t(y) * std::size_t(values.width) + std::size_t(x)]);
            }
            csv.endLine();
        }
        if (channel != channels.back()) csv.endLine();
    }
}

/// Uniformity is the smallest over the mean value, and the diversity the smallest over the largest (EN 12665:2018).
void writeSummary(CsvText& csv, const std::vector<const Plane*>& channels) {
    for (const char* const title : {"channel", "unit", "mean", "minimum", "maximum", "minimum/mean", "minimum/maximum"})
        csv.cell(title);
    csv.endLine();
    for (const Plane* const channel : channels) {
        if (channel->values.empty()) continue;
        double sum = 0.0;
        for (const float value : channel->values) sum += value;
        const auto [least, most] = std::minmax_element(channel->values.begin(), channel->values.end());
        const double mean = sum / double(channel->values.size());
        csv.cell(channel->name).cell(channel->unit).cell(mean).cell(*least).cell(*most);
        csv.cell(mean != 0.0 ? *least / mean : 0.0).cell(*most != 0.0F ? double(*least) / double(*most) : 0.0);
        csv.endLine();
    }
}

std::optional<std::string> makeTable(const Raw& raw, const node::Node& output, std::string_view format) {
    if (format != "csv") return std::nullopt;
    const std::string& names = output.text("channels");
    const ChannelValues values =
        channelValues(raw, output, {output.choice("quantity"), !names.empty(), !names.empty()}, raw.isDraft());
    const auto channels = chosenChannels(values, names);
    if (channels.empty()) throw std::runtime_error("the result has no channels");
    CsvText csv(CsvStyle::named(output.choice("separator"), output.integer("digits")));
    const std::string& layout = output.choice("layout");
    if (layout == "summary") {
        writeSummary(csv, channels);
    } else if (layout == "grid") {
        writeGrids(csv, values, channels);
    } else {
        writePixels(csv, values, channels);
    }
    return csv.take();
}

constexpr std::array<const char*, 1> kFormats{"csv"};
const bool kKnown = addDocumentClass("table", makeTable);
const bool kFormatsKnown = outputClasses().add("table", [] { return std::span<const char* const>(kFormats); });

}  // namespace
}  // namespace nemra::core
