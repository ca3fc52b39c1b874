// Illuminance of a diffuse surface from its luminance: E = pi L / rho (Lambert, "Photometria", 1760).
#include <algorithm>
#include <numbers>

#include "engine/core/output/picture.h"

namespace nemra::core {
namespace {

/// Whether the pixels hold what arrives at a surface, which a photometric sensor has in lux already.
bool measuresIrradiance(const Picture& picture) {
    if (!picture.raw) return false;
    const auto& provided = picture.raw->quantities();
    return std::find(provided.begin(), provided.end(), NEMRA_QUANTITY_SCENE_IRRADIANCE) != provided.end();
}

void filterIlluminance(const node::Node& node, Picture& picture) {
    if (measuresIrradiance(picture)) return;
    const double factor = std::numbers::pi / node.real("reflectance");
    for (float& value : picture.image.values) value = static_cast<float>(value * factor);
}

const bool kKnown = filterClasses().add("illuminance", filterIlluminance);

}  // namespace
}  // namespace nemra::core
