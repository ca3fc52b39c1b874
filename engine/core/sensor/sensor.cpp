#include "engine/core/sensor/sensor.h"

#include <algorithm>
#include <cmath>

#include "engine/core/sensor/ciexyz.h"

namespace nemra::core {

ClassTable<MakeSensor>& sensorClasses() {
    static ClassTable<MakeSensor> table("sensor");
    return table;
}

SpectralGrid gridBetween(double first, double last) {
    const int cells = std::max(1, static_cast<int>(std::ceil((last - first) - 1.0e-9)));
    return {first, (last - first) / cells, cells};
}

Sensor makeSensor(const NodePointer& node, Translation& translation) {
    const NodePointer resolved = translation.resolve(node);
    if (!resolved) return colorimetricSensor(Observer::cie1931);
    if (const MakeSensor make = sensorClasses().find(resolved->type())) return make(*resolved, translation);
    translation.warnUnlit(*resolved, "sensors of this class aren't simulated yet; a ciexyz sensor takes its place");
    return colorimetricSensor(Observer::cie1931);
}

}  // namespace nemra::core
