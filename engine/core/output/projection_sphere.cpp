// Pictures all around, and pictures from files of which the user says how they were taken.
#include <algorithm>
#include <numbers>

#include "engine/core/output/projections.h"

namespace nemra::core {
namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

class Sphere final : public Projection {
public:
    Sphere(bool equalArea, double longitudes, double latitudes, int width, int height)
        : equalArea_(equalArea), longitudes_(longitudes), latitudes_(latitudes), width_(width), height_(height) {}
    std::optional<Vec3> direction(double x, double y) const override {
        const double longitude = longitudes_ * (x / width_ - 0.5);
        const double rise = 0.5 - y / height_;
        const double latitude =
            equalArea_ ? std::asin(std::clamp(2.0 * rise * std::sin(0.5 * latitudes_), -1.0, 1.0)) : latitudes_ * rise;
        return Vec3{std::cos(latitude) * std::sin(longitude), std::sin(latitude), std::cos(latitude) * std::cos(longitude)};
    }

private:
    bool equalArea_;
    double longitudes_, latitudes_;
    double width_, height_;
};

std::unique_ptr<Projection> ofSpherecam(const node::Node& instrument, int width, int height) {
    return sphere(instrument.choice("projection") == "equal_area", instrument.real("longitude_range"),
                  instrument.real("latitude_range"), width, height);
}

/// Pictures from elsewhere hold radiances or luminances only where the user says so.
std::unique_ptr<Projection> ofPicture(const node::Node& instrument, int width, int height) {
    const std::string& kind = instrument.choice("projection");
    if (kind == "perspective") return perspectiveWithSquarePixels(instrument, width, height);
    if (kind == "equirectangular") return sphere(false, 360.0, 180.0, width, height);
    if (kind == "equidistant" || kind == "equisolid") return fisheye(kind, instrument.real("fov"), false, width, height);
    return nullptr;
}

const bool kSpherecam = addProjection("spherecam", ofSpherecam);
const bool kImported = addProjection("imported", ofPicture);
const bool kUnknown = addProjection("defaultrawinstrument", ofPicture);

}  // namespace

std::unique_ptr<Projection> sphere(bool equalArea, double longitudeRangeDeg, double latitudeRangeDeg, int width, int height) {
    return std::make_unique<Sphere>(equalArea, longitudeRangeDeg * kDegree, latitudeRangeDeg * kDegree, width, height);
}

}  // namespace nemra::core
