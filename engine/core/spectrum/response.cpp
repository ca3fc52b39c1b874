#include "engine/core/spectrum/response.h"

#include <algorithm>
#include <cmath>

namespace nemra::core {

double responseNorm(std::string_view normalization, const SpectralCurve& response, double fromNm, double toNm) {
    if (normalization == "area") return integrate(response, fromNm, toNm);
    if (normalization != "peak") return 1.0;
    double peak = 0.0;
    const auto see = [&](double nm) { peak = std::max(peak, response(nm)); };
    constexpr double step = 0.25;  // nm
    for (double nm = fromNm; nm < toNm; nm += step) see(nm);
    see(toNm);
    for (const double knot : response.knots) {
        // Where the curve jumps, it has a value on either side.
        for (const double nm : {std::nextafter(knot, 0.0), knot, std::nextafter(knot, 2.0 * knot)}) {
            if (nm >= fromNm && nm <= toNm) see(nm);
        }
    }
    return peak;
}

}  // namespace nemra::core
