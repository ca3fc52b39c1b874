#include <numbers>

#include "engine/core/instrument/camera.h"

namespace nemra::core {
namespace {

/// A film behind a pinhole at its focal length, or behind an aplanatic thin lens. The lens is focused by moving the film: at
/// image distance v = f d / (d - f) for objects at distance d, so that the field narrows as focus comes nearer, and the
/// irradiance on axis is pi L / (4 Nw^2) with the working f-number Nw = N v / f. Pixels hold the scene's radiance, averaged over
/// the lens.
CameraModel makeStdcam(const node::Node& node, Translation&) {
    CameraModel camera = readView(node);
    const double focal = node.real("focal_length") * 1.0e-3;
    const double filmWidth = node.real("film_width") * 1.0e-3;
    const double filmHeight = node.real("film_height") * 1.0e-3;
    if (!(focal > 0.0 && filmWidth > 0.0 && filmHeight > 0.0)) {
        throw SceneFault(node.label(), "focal_length, film_width and film_height must be positive");
    }
    double imageDistance = focal;
    if (node.choice("aperture") == "lens") {
        const double number = node.real("f_number");
        const double distance = node.real("focus_distance");
        if (!(number > 0.0)) throw SceneFault(node.label(), "f_number must be positive");
        if (!(distance > focal)) throw SceneFault(node.label(), "a lens can't be focused nearer than its focal length");
        imageDistance = focal * distance / (distance - focal);
        const double working = number * imageDistance / focal;
        camera.lensRadius = 0.5 * focal / number;
        camera.focusDistance = distance;
        camera.sensorIrradiance = std::numbers::pi / (4.0 * working * working);
        camera.pixelArea = filmWidth / camera.width * filmHeight / camera.height;
    }
    camera.extentX = filmWidth / imageDistance;
    camera.extentY = filmHeight / imageDistance;
    return camera;
}

const bool kKnown = instrumentClasses().add("stdcam", makeStdcam);

}  // namespace
}  // namespace nemra::core
