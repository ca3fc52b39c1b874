#include <charconv>
#include <cmath>

#include "engine/core/sensor/sensor.h"

namespace nemra::core {
namespace {

std::string wavelengthName(double nm) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, std::round(nm * 1000.0) / 1000.0).ptr;
    return std::string(text, end) + " nm";
}

/// Boxes of equal width side by side, named by their centres. A single box is as wide as the distance between first and last, or
/// 10 nm if these are the same.
Sensor makeSpectralbox(const node::Node& node, Translation&) {
    const double first = node.real("first");
    const double last = node.real("last");
    const int count = node.integer("count");
    if (count < 1) throw SceneFault(node.label(), "count must be at least 1");
    if (!(first > 0.0 && last >= first)) throw SceneFault(node.label(), "first must be positive and not above last (nm)");
    if (count > 1 && !(last > first)) throw SceneFault(node.label(), "several boxes need a last wavelength above the first");
    const double width = count > 1 ? (last - first) / (count - 1) : last > first ? last - first : 10.0;
    const double from = count > 1 ? first - 0.5 * width : 0.5 * (first + last) - 0.5 * width;
    if (!(from > 0.0)) throw SceneFault(node.label(), "the first box reaches below 0 nm");
    Sensor sensor;
    sensor.cellsPerBox = gridBetween(0.0, width).cells;
    sensor.grid = {from, width / sensor.cellsPerBox, sensor.cellsPerBox * count};
    for (int i = 0; i < count; ++i) {
        const double center = from + (i + 0.5) * width;
        sensor.channels.push_back(
            {wavelengthName(center), ChannelKind::spectral, center * 1.0e-9, width * 1.0e-9, "W.m^-2.sr^-1.nm^-1"});
    }
    return sensor;
}

const bool kKnown = sensorClasses().add("spectralbox", makeSpectralbox);

}  // namespace
}  // namespace nemra::core
