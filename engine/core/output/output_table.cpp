// Tables of what the filters of an output make of the channels, and of meta channels. Those of the sensor's channels alone come
// straight from the result (table_text.h).
#include <algorithm>

#include "engine/core/film/arrays.h"
#include "engine/core/output/channel_values.h"
#include "engine/core/output/document.h"
#include "engine/core/output/table_text.h"

namespace nemra::core {
namespace {

/// The channels as a result of their own, so that one writer serves both.
Raw resultOf(const ChannelValues& values, std::shared_ptr<const node::Node> instrument) {
    auto film = std::make_shared<Film>();
    film->width = values.width;
    film->height = values.height;
    for (const Plane& channel : values.channels) {
        film->channels.push_back({channel.name, ChannelKind::unknown, 0.0, 0.0, channel.unit.empty() ? "1" : channel.unit});
    }
    makeArrays(*film);
    film->samples.assign(film->samples.size(), 1);
    for (int x = 0; x < values.width; ++x) {
        for (int y = 0; y < values.height; ++y) {
            for (std::size_t c = 0; c < values.channels.size(); ++c) {
                film->high[film->cell(x, y, static_cast<int>(c))] =
                    values.channels[c].values[std::size_t(y) * std::size_t(values.width) + std::size_t(x)];
            }
        }
    }
    RawParts parts;
    parts.film = std::move(film);
    parts.instrument = std::move(instrument);
    return Raw(std::move(parts));
}

std::optional<std::string> makeTable(const Raw& raw, const node::Node& output, std::string_view format) {
    if (format != "csv") return std::nullopt;
    TableLayout layout = tableLayoutOf(output);
    const auto& names = layout.channels;
    const bool withMeta =
        std::any_of(names.begin(), names.end(), [&](const std::string& name) { return raw.hasMetaChannel(name); });
    if (output.list().empty() && !withMeta) return std::nullopt;
    const Raw shown =
        resultOf(channelValues(raw, output, {output.choice("quantity"), withMeta, false}, raw.isDraft()), raw.instrument());
    layout.quantity = NEMRA_QUANTITY_RAW;  // they are in the wanted one by now
    const Buffer text = writeTable(shown, layout);
    return std::string(text.bytes().begin(), text.bytes().end());
}

const bool kKnown = addDocumentClass("table", makeTable);

}  // namespace
}  // namespace nemra::core
