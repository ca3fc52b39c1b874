// Perspective views: what idealrectcam and stdcam render, and pictures that are said to be taken so.
#include <numbers>

#include "engine/core/instrument/camera.h"
#include "engine/core/output/projections.h"

namespace nemra::core {
namespace {

class Perspective final : public Projection {
public:
    /// Size of the image plane at distance 1.
    Perspective(double extentX, double extentY, int width, int height)
        : extentX_(extentX), extentY_(extentY), width_(width), height_(height) {}
    std::optional<Vec3> direction(double x, double y) const override {
        return normalized(Vec3{extentX_ * (x / width_ - 0.5), extentY_ * (0.5 - y / height_), 1.0});
    }

private:
    double extentX_, extentY_;
    double width_, height_;
};

/// As the renderer's own model of the camera has it.
std::unique_ptr<Projection> ofCamera(const node::Node& instrument, int width, int height) {
    const node::Scene scene;
    Translation translation(scene);
    try {
        const CameraModel camera = makeCamera(instrument, translation);
        return std::make_unique<Perspective>(camera.extentX, camera.extentY, width, height);
    } catch (const SceneFault&) {
        return nullptr;
    }
}

const bool kIdealrectcam = addProjection("idealrectcam", ofCamera);
const bool kStdcam = addProjection("stdcam", ofCamera);

}  // namespace

std::unique_ptr<Projection> perspectiveWithSquarePixels(const node::Node& instrument, int width, int height) {
    const double extent = 2.0 * std::tan(0.5 * instrument.real("horizontal_fov") * std::numbers::pi / 180.0);
    return std::make_unique<Perspective>(extent, extent * height / width, width, height);
}

}  // namespace nemra::core
