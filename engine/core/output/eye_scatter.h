/// Point-spread functions of the eye, 1/sr over the angle from the point in degrees.
#pragma once

#include <functional>

namespace nemra::core {

using PointSpread = std::function<double(double)>;

/// The total glare equation of CIE 135/1 (Vos and van den Berg, "Report on disability glare", CIE Collection 135, 1999), from 0
/// to 100 degrees. Age in years; pigmentation 0 for black to 1.2 for very light blue eyes.
PointSpread cieGlare(double age, double pigmentation);

/// Spencer, Shirley, Zimmerman, Greenberg, "Physically-Based Glare Effects for Digital Images", SIGGRAPH 1995, for 568 nm.
PointSpread mesopicGlare();
PointSpread scotopicGlare();

/// Integral over the directions up to that angle, degrees. Over all of them, 90 degrees, it is 1 but for what the fit misses.
double encircled(const PointSpread& spread, double degrees);

}  // namespace nemra::core
