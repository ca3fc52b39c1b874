// One channel as a picture in false colours.
#include <array>
#include <stdexcept>

#include "engine/core/output/channel_values.h"
#include "engine/core/output/false_color.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {
namespace {

DisplayImage makeChannelImage(const Raw& raw, const node::Node& output, bool fast, int bits) {
    const ChannelValues values = channelValues(raw, output, {output.choice("quantity"), true, true}, fast);
    const std::string& name = output.text("channel");
    const Plane* const channel = values.find(name);
    if (!channel) throw std::runtime_error(name.empty() ? "the result has no channels" : "there is no channel \"" + name + "\"");
    const FalseColors colors = falseColorsOf(output, channel->values);
    const std::string title = channel->unit.empty() ? channel->name : channel->name + " " + channel->unit;
    const Canvas canvas = withLegend(colorValues(channel->values, values.width, values.height, colors), colors, title);
    return displayOf(canvas, bits);
}

constexpr std::array<const char*, 2> kFormats{"png", "jpg"};
const bool kKnown = addDisplayClass("channelimage", makeChannelImage);
const bool kFormatsKnown =
    outputClasses().add("channelimage", [](const node::Node&) { return std::span<const char* const>(kFormats); });

}  // namespace
}  // namespace nemra::core
