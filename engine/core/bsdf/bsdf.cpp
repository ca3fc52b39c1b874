#include "engine/core/bsdf/bsdf.h"

#include <algorithm>
#include <cmath>

#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

ClassTable<MakeBsdf>& bsdfClasses() {
    static ClassTable<MakeBsdf> table("bsdf");
    return table;
}

BsdfModel makeBsdf(const NodePointer& node, Translation& translation, SpectralTables& tables) {
    const NodePointer resolved = translation.resolve(node);
    if (!resolved) return {};
    if (const MakeBsdf make = bsdfClasses().find(resolved->type())) return make(*resolved, translation, tables);
    translation.warnUnlit(*resolved, "surfaces of this class aren't simulated yet; a diffuse reflector of 0.5 takes its place");
    return {SurfaceKind::lambertian, tables.add(constantCurve(0.5)), nullptr, false};
}

int bakeReflectance(const NodePointer& spectrum, const node::Node& owner, Translation& translation, SpectralTables& tables) {
    SpectralCurve curve = makeSpectrum(spectrum, translation);
    const SpectralGrid& grid = tables.grid();
    bool outside = false;
    for (int i = 0; i < grid.cells; ++i) {
        const double value = curve(grid.border(i) + 0.5 * grid.step);
        outside = outside || !(value >= 0.0 && value <= 1.0 + 1.0e-9);
    }
    if (outside) {
        translation.warn(owner, "its reflectance isn't between 0 and 1 at all wavelengths; it is cut there");
        curve.value = [inner = std::move(curve.value)](double lambda) {
            const double value = inner(lambda);
            return value > 0.0 ? std::min(value, 1.0) : 0.0;  // what is no number counts as 0
        };
    }
    return tables.add(curve);
}

}  // namespace nemra::core
