#pragma once

#include "engine/core/sensor/sensor.h"
#include "engine/core/spectrum/observer.h"

namespace nemra::core {

/// Tristimulus values X, Y, Z; Y is the luminance in cd/m2 (for the 2 degree observer).
Sensor colorimetricSensor(Observer observer);

}  // namespace nemra::core
