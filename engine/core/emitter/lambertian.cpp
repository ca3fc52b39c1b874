#include <cmath>
#include <numbers>

#include "engine/core/emitter/emitter.h"
#include "engine/core/spectrum/observer.h"

namespace nemra::core {
namespace {

/// What the option says the curve's level is: its target, and the factor from radiance to that quantity.
struct Level {
    const char* option;
    bool luminous;  ///< weighed with the 2 degree observer, else summed over 360 to 830 nm
    bool ofWholeSurface;
    bool perHemisphere;  ///< times pi: what leaves a side
};
constexpr Level kLevels[] = {
    {"total_radiance", false, false, false},  {"luminance", true, false, false}, {"exitance", false, false, true},
    {"luminous_exitance", true, false, true}, {"power", false, true, true},      {"luminous_flux", true, true, true},
};

/// Radiance alike in all directions. Radiometric quantities count the band from 360 to 830 nm; a flux counts all emitting sides.
EmitterModel makeLambertian(const node::Node& node, Translation& translation) {
    EmitterModel model;
    const std::string& side = node.choice("side");
    model.sides = side == "both" ? kEmitsFront | kEmitsBack : side == "back" ? kEmitsBack : kEmitsFront;
    model.radiance = makeRadiance(node.child("radiance"), node, translation);
    const std::string& quantity = node.choice("quantity");
    for (const Level& level : kLevels) {
        if (quantity != level.option) continue;
        double total = level.luminous ? curveLuminance(model.radiance) : integrate(model.radiance, kVisibleFirst, kVisibleLast);
        const double target = node.real(quantity);
        if (level.perHemisphere) total *= std::numbers::pi;
        if (level.ofWholeSurface && side == "both") total *= 2.0;
        if (target != 0.0 && (!(total > 0.0) || !std::isfinite(total))) {
            translation.warn(node, "its spectrum is zero between 360 and 830 nm, so that " + quantity +
                                       " can't be reached; give it a radiance spectrum. It stays dark");
            return {};
        }
        model.radiance = scaledCurve(std::move(model.radiance), target != 0.0 ? target / total : 0.0);
        model.ofWholeSurface = level.ofWholeSurface;
    }
    return model;
}

const bool kKnown = emitterClasses().add("lambertian", makeLambertian);

}  // namespace
}  // namespace nemra::core
