#include "engine/core/material/material.h"

namespace nemra::core {

ClassTable<MakeMaterial>& materialClasses() {
    static ClassTable<MakeMaterial> table("material");
    return table;
}

MaterialModel makeMaterial(const NodePointer& node, Translation& translation, SpectralTables& tables) {
    if (const NodePointer resolved = node ? translation.resolve(node) : nullptr) {
        if (const MakeMaterial make = materialClasses().find(resolved->type())) {
            MaterialModel model = make(*resolved, translation, tables);
            translation.reportUnlit(resolved);
            return model;
        }
        translation.warnUnlit(*resolved,
                              "materials of this class aren't simulated yet; a diffuse reflector of 0.5 takes its place");
    }
    MaterialModel neutral;
    neutral.bsdf.kind = SurfaceKind::lambertian;
    neutral.bsdf.reflectance = tables.add(constantCurve(0.5));
    return neutral;
}

}  // namespace nemra::core
