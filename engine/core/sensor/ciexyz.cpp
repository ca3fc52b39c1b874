#include "engine/core/sensor/ciexyz.h"

namespace nemra::core {

Sensor colorimetricSensor(Observer observer) {
    Sensor sensor;
    sensor.grid = gridBetween(kVisibleFirst, kVisibleLast);
    const char* names[3] = {"X", "Y", "Z"};
    for (int c = 0; c < 3; ++c) {
        sensor.channels.push_back({names[c], ChannelKind::luminous, 0.0, 0.0, "cd.m^-2"});
        sensor.responses.push_back(scaledCurve(matchingFunction(observer, c), kMaxEfficacy));
    }
    sensor.leading = 1;
    return sensor;
}

namespace {

Sensor makeCiexyz(const node::Node& node, Translation&) { return colorimetricSensor(observerByName(node.choice("observer"))); }

const bool kKnown = sensorClasses().add("ciexyz", makeCiexyz);

}  // namespace
}  // namespace nemra::core
