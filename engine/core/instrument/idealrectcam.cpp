#include <cmath>
#include <numbers>

#include "engine/core/instrument/camera.h"

namespace nemra::core {
namespace {

/// Rectilinear pinhole with square pixels.
CameraModel makeIdealrectcam(const node::Node& node, Translation&) {
    CameraModel camera = readView(node);
    const double fov = node.real("horizontal_fov") * std::numbers::pi / 180.0;
    if (!(fov > 0.0 && fov < std::numbers::pi))
        throw SceneFault(node.label(), "horizontal_fov must lie between 0 and 180 degrees");
    camera.extentX = 2.0 * std::tan(0.5 * fov);
    camera.extentY = camera.extentX * camera.height / camera.width;
    return camera;
}

const bool kKnown = instrumentClasses().add("idealrectcam", makeIdealrectcam);

}  // namespace
}  // namespace nemra::core
