#include "engine/core/emitter/emitter.h"

namespace nemra::core {

ClassTable<MakeEmitter>& emitterClasses() {
    static ClassTable<MakeEmitter> table("emitter");
    return table;
}

EmitterModel makeEmitter(const NodePointer& node, Translation& translation) {
    const NodePointer resolved = translation.resolve(node);
    if (!resolved) return {};
    if (const MakeEmitter make = emitterClasses().find(resolved->type())) return make(*resolved, translation);
    translation.warnUnlit(*resolved, "emitters of this class aren't simulated yet; it stays dark");
    return {};
}

}  // namespace nemra::core
