/// Cameras: an image plane, and a pinhole or a thin lens before it.
#pragma once

#include "engine/core/geometry/affine.h"
#include "engine/core/translate/class_table.h"
#include "engine/core/translate/translation.h"

namespace nemra::core {

struct CameraModel {
    int width = 0;
    int height = 0;
    Vec3 position{};
    Vec3 forward{}, right{}, up{};  ///< unit vectors as the image shows them
    /// Size of the image plane at distance 1, seen from the pinhole or the middle of the lens.
    double extentX = 0.0;
    double extentY = 0.0;
    double lensRadius = 0.0;        ///< m; 0: pinhole
    double focusDistance = 0.0;     ///< m along the axis
    double exposureTime = 0.0;      ///< s
    double sensorIrradiance = 0.0;  ///< irradiance on axis over scene radiance; 0: no physical sensor
    double pixelArea = 0.0;         ///< m2
};

using MakeCamera = CameraModel (*)(const node::Node& node, Translation& translation);
ClassTable<MakeCamera>& instrumentClasses();

/// `node` is resolved. Throws SceneFault for what can't be rendered.
CameraModel makeCamera(const node::Node& node, Translation& translation);

/// Position, target, up, width, height and exposure time, which all cameras share; refuses what has no meaning.
CameraModel readView(const node::Node& node);

}  // namespace nemra::core
