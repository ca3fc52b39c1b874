#include "engine/core/dielectricfunc/dielectricfunc.h"

namespace nemra::core {

ClassTable<MakeDielectric>& dielectricClasses() {
    static ClassTable<MakeDielectric> table("dielectricfunc");
    return table;
}

ComplexIndex makeDielectric(const NodePointer& node, Translation& translation) {
    const NodePointer resolved = translation.resolve(node);
    if (!resolved) return {};
    if (const MakeDielectric make = dielectricClasses().find(resolved->type())) return make(*resolved, translation);
    translation.warnUnlit(*resolved, "dielectric functions of this class aren't simulated yet; it counts as vacuum");
    return {};
}

}  // namespace nemra::core
