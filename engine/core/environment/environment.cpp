#include "engine/core/environment/environment.h"

namespace nemra::core {

ClassTable<MakeEnvironment>& environmentClasses() {
    static ClassTable<MakeEnvironment> table("environment");
    return table;
}

EnvironmentModel makeEnvironment(const NodePointer& node, Translation& translation, SpectralTables& tables) {
    const NodePointer resolved = translation.resolve(node);
    if (!resolved) return {};
    if (const MakeEnvironment make = environmentClasses().find(resolved->type())) return make(*resolved, translation, tables);
    translation.warnUnlit(*resolved, "environments of this class aren't simulated yet; it is dark");
    return {};
}

}  // namespace nemra::core
