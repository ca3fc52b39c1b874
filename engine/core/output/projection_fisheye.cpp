// Fisheye pictures: the radius in the image for a direction at the angle theta to the line of sight.
#include <numbers>

#include "engine/core/output/projections.h"

namespace nemra::core {
namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

class Fisheye final : public Projection {
public:
    Fisheye(std::string_view kind, double halfField, bool diagonal, int width, int height)
        : kind_(kind), halfField_(halfField), x0_(0.5 * width), y0_(0.5 * height) {
        radius_ = diagonal ? std::hypot(x0_, y0_) : std::min(x0_, y0_);
    }
    std::optional<Vec3> direction(double x, double y) const override {
        const double right = (x - x0_) / radius_;
        const double up = (y0_ - y) / radius_;
        const double r = std::hypot(right, up);
        if (r > 1.0 + 1.0e-9) return std::nullopt;
        const double theta = angle(std::min(r, 1.0));
        const double s = r > 0.0 ? std::sin(theta) / r : 0.0;
        return Vec3{right * s, up * s, std::cos(theta)};
    }

private:
    /// The angle to the line of sight for a radius, of 1 at the edge of the circle.
    double angle(double r) const {
        if (kind_ == "equisolid") return 2.0 * std::asin(r * std::sin(0.5 * halfField_));
        if (kind_ == "stereographic") return 2.0 * std::atan(r * std::tan(0.5 * halfField_));
        if (kind_ == "orthographic") return std::asin(r * std::sin(std::min(halfField_, 0.5 * std::numbers::pi)));
        return r * halfField_;
    }

    std::string kind_;
    double halfField_;
    double x0_, y0_;
    double radius_;
};

std::unique_ptr<Projection> ofFisheyecam(const node::Node& instrument, int width, int height) {
    return fisheye(instrument.choice("projection"), instrument.real("fov"), instrument.choice("fit") == "diagonal", width,
                   height);
}

const bool kKnown = addProjection("fisheyecam", ofFisheyecam);

}  // namespace

std::unique_ptr<Projection> fisheye(std::string_view kind, double fovDeg, bool diagonal, int width, int height) {
    return std::make_unique<Fisheye>(kind, 0.5 * fovDeg * kDegree, diagonal, width, height);
}

}  // namespace nemra::core
