/// Distortion of a lens: radial and decentring (A. E. Conrady 1919; D. C. Brown, Decentering distortion of lenses,
/// Photogrammetric Engineering 32, 1966), with the signs and the order of coefficients that programs for camera calibration have.
#pragma once

#include <optional>

#include "engine/node/node.h"

namespace nemra::core {

/// A point of the image, as its distance from where the axis meets it over the focal length: x to the right, y down, in an
/// upright image.
struct ImagePoint {
    double x;
    double y;
};

class LensDistortion {
public:
    LensDistortion(double k1, double k2, double k3, double p1, double p2);
    /// By the option `brown` of the instrument's choice `distortion`; none if that is `none`.
    static LensDistortion of(const node::Node& instrument);

    /// Where the lens puts what a perspective would have at `ideal`, with r2 = x2 + y2:
    /// x (1 + k1 r2 + k2 r4 + k3 r6) + 2 p1 x y + p2 (r2 + 2 x2), y (1 + ...) + p1 (r2 + 2 y2) + 2 p2 x y.
    ImagePoint distorted(ImagePoint ideal) const noexcept;
    /// The other way. Empty where the lens shows nothing: beyond the radius at which the image would fold back.
    std::optional<ImagePoint> ideal(ImagePoint distorted) const noexcept;

private:
    struct Jacobian {
        double xx, xy, yy;  ///< it is symmetric
        double determinant() const noexcept { return xx * yy - xy * xy; }
    };
    Jacobian jacobian(ImagePoint ideal) const noexcept;

    double k1_, k2_, k3_, p1_, p2_;
    double reach_;  ///< ideal radius up to which no direction folds back
};

}  // namespace nemra::core
