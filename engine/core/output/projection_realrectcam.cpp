// The view of a camera that is given by its sensor's pixels and its lens: with shift and distortion.
#include "engine/core/instrument/lens_distortion.h"
#include "engine/core/output/projections.h"

namespace nemra::core {
namespace {

class RealLens final : public Projection {
public:
    /// Pixels and shift in focal lengths; `imageDistance` too.
    RealLens(const LensDistortion& distortion, ImagePoint pixel, ImagePoint shift, double imageDistance, int width, int height)
        : distortion_(distortion),
          pixel_(pixel),
          shift_(shift),
          imageDistance_(imageDistance),
          x0_(0.5 * width),
          y0_(0.5 * height) {}
    std::optional<Vec3> direction(double x, double y) const override {
        const auto ideal = distortion_.ideal({(x - x0_) * pixel_.x + shift_.x, (y - y0_) * pixel_.y - shift_.y});
        if (!ideal) return std::nullopt;
        return normalized(Vec3{ideal->x, -ideal->y, imageDistance_});
    }

private:
    LensDistortion distortion_;
    ImagePoint pixel_;
    ImagePoint shift_;  ///< of the lens, to the right and upwards: the image moves the same way over what is seen
    double imageDistance_;
    double x0_, y0_;
};

std::unique_ptr<Projection> ofRealrectcam(const node::Node& instrument, int width, int height) {
    const double focal = instrument.real("focal_length") * 1.0e-3;
    const double focus = instrument.real("focus_distance");
    if (!(focal > 0.0 && focus > focal)) return nullptr;  // no image of anything
    const ImagePoint pixel{instrument.real("pixel_pitch_x") * 1.0e-6 / focal, instrument.real("pixel_pitch_y") * 1.0e-6 / focal};
    const ImagePoint shift{instrument.real("shift_x") * 1.0e-3 / focal, instrument.real("shift_y") * 1.0e-3 / focal};
    return std::make_unique<RealLens>(LensDistortion::of(instrument), pixel, shift, focus / (focus - focal), width, height);
}

const bool kKnown = addProjection("realrectcam", ofRealrectcam);

}  // namespace
}  // namespace nemra::core
