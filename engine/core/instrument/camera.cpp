#include "engine/core/instrument/camera.h"

#include "engine/core/render.h"

namespace nemra::core {

ClassTable<MakeCamera>& instrumentClasses() {
    static ClassTable<MakeCamera> table("instrument");
    return table;
}

CameraModel makeCamera(const node::Node& node, Translation& translation) {
    const MakeCamera make = instrumentClasses().find(node.type());
    if (!make) throw SceneFault(node.label(), "instruments of this class aren't simulated yet");
    return make(node, translation);
}

CameraModel readView(const node::Node& node) {
    CameraModel camera;
    camera.width = node.integer("width");
    camera.height = node.integer("height");
    if (camera.width < 1 || camera.height < 1) {
        throw SceneFault(node.label(), "an image needs at least 1 x 1 pixels, not " + std::to_string(camera.width) + " x " +
                                           std::to_string(camera.height));
    }
    camera.position = node.vector("position");
    camera.exposureTime = node.real("exposure_time");
    const Vec3 target = node.vector("target");
    const Vec3 up = node.vector("up");
    if (!isFinite(camera.position) || !isFinite(target) || !isFinite(up)) {
        throw SceneFault(node.label(), "position, target and up must be finite");
    }
    camera.forward = target - camera.position;
    if (!(length(camera.forward) > 0.0)) throw SceneFault(node.label(), "target is where position is; the camera looks nowhere");
    camera.forward = normalized(camera.forward);
    camera.right = cross(camera.forward, normalized(up));
    if (!(length(camera.right) > 1.0e-9)) throw SceneFault(node.label(), "up is zero or lies along the view");
    camera.right = normalized(camera.right);
    camera.up = cross(camera.right, camera.forward);
    return camera;
}

}  // namespace nemra::core
