#include "engine/core/setup/setup.h"

namespace nemra::core {

ClassTable<MakeSetup>& setupClasses() {
    static ClassTable<MakeSetup> table("setup");
    return table;
}

SetupModel chooseSetup(const std::string& name, Translation& translation) {
    const node::Scene& scene = translation.scene();
    const std::string where = "scene \"" + scene.name + "\"";
    const std::string& wanted = name.empty() ? scene.activeSetup : name;
    NodePointer chosen;
    if (!wanted.empty()) {
        chosen = scene.findNode("setup", wanted);  // a library doesn't decide what is rendered
        if (!chosen) throw SceneFault(where, "has no setup named \"" + wanted + "\"");
    } else {
        int count = 0;
        for (const auto& node : scene.nodes) {
            if (!node || node->family() != "setup") continue;
            if (count++ == 0) chosen = node;
        }
        if (!chosen) throw SceneFault(where, "has no setup; nothing says what to render");
        if (count > 1) {
            throw SceneFault(where, "has " + std::to_string(count) + " setups and none is active; choose one by setActiveSetup");
        }
    }
    const std::string label = chosen->label();
    const NodePointer resolved = translation.resolve(std::move(chosen));
    if (!resolved) throw SceneFault(label, "leads to no setup");
    const MakeSetup make = setupClasses().find(resolved->type());
    if (!make) throw SceneFault(resolved->label(), "setups of this class aren't simulated yet");
    return make(resolved, translation);
}

}  // namespace nemra::core
