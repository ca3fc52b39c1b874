#include "engine/core/sensor/sensor.h"

namespace nemra::core {
namespace {

Sensor makeEnergy(const node::Node& node, Translation&) {
    const double minimum = node.real("minimum");
    const double maximum = node.real("maximum");
    if (!(minimum > 0.0 && minimum < maximum)) throw SceneFault(node.label(), "minimum must be positive and below maximum (nm)");
    Sensor sensor;
    sensor.grid = gridBetween(minimum, maximum);
    sensor.channels.push_back({"E", ChannelKind::energy, 0.0, 0.0, "W.m^-2.sr^-1"});
    sensor.responses.push_back(constantCurve(1.0));
    sensor.leading = 0;
    return sensor;
}

const bool kKnown = sensorClasses().add("energy", makeEnergy);

}  // namespace
}  // namespace nemra::core
