#include "engine/core/output/scotopic.h"

#include <algorithm>
#include <cmath>

#include "engine/core/data/tables.h"

namespace nemra::core {

SpectralCurve scotopicEfficiency() {
    SpectralCurve curve;
    for (int i = 0; i < data::kScotopicCount; ++i) curve.knots.push_back(data::kScotopicFirst + i);
    curve.value = [](double nm) {
        const double at = nm - data::kScotopicFirst;
        if (at < 0.0 || at > data::kScotopicCount - 1) return 0.0;
        const int row = std::min(static_cast<int>(at), data::kScotopicCount - 2);
        const double part = at - row;
        return (1.0 - part) * data::kScotopic[row] + part * data::kScotopic[row + 1];
    };
    return curve;
}

double approximateScotopic(double x, double y, double z) {
    if (!(x > 0.0) || !(y > 0.0)) return 0.0;
    return std::max(0.0, y * (1.33 * (1.0 + (y + z) / x) - 1.68));
}

std::vector<float> scotopicLuminances(const Picture& picture) {
    const auto plane = std::find_if(picture.planes.begin(), picture.planes.end(),
                                    [](const Plane& candidate) { return candidate.name == kScotopicPlane; });
    if (plane != picture.planes.end()) return plane->values;
    const std::vector<float>& xyz = picture.image.values;
    std::vector<float> luminances(xyz.size() / 3);
    for (std::size_t i = 0; i < luminances.size(); ++i) {
        luminances[i] = static_cast<float>(approximateScotopic(xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]));
    }
    return luminances;
}

}  // namespace nemra::core
