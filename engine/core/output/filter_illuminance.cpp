// Illuminance of a diffuse surface from its luminance: E = pi L / rho (Lambert, "Photometria", 1760).
#include <numbers>

#include "engine/core/output/picture.h"

namespace nemra::core {
namespace {

/// Instruments whose pixels hold what arrives at a surface, which a photometric sensor has in lux already.
bool measuresIrradiance(const Picture& picture) {
    const auto instrument = picture.raw ? picture.raw->instrument() : nullptr;
    if (!instrument) return false;
    const std::string& type = instrument->type();
    if (type.starts_with("irrad") || type == "materialirrad") return true;
    if (type == "lightmap") return instrument->choice("quantity") != "radiance";
    return (type == "imported" || type == "defaultrawinstrument") && instrument->choice("quantity") == "scene_irradiance";
}

void filterIlluminance(const node::Node& node, Picture& picture) {
    if (measuresIrradiance(picture)) return;
    const double factor = std::numbers::pi / node.real("reflectance");
    for (float& value : picture.image.values) value = static_cast<float>(value * factor);
}

const bool kKnown = filterClasses().add("illuminance", filterIlluminance);

}  // namespace
}  // namespace nemra::core
