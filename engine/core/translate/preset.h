/// Nodes that stand for a named node of their family: the class `linked`, and what is set to `preset`.
#pragma once

#include "engine/core/translate/translation.h"

namespace nemra::core {

/// What is behind a chain of names.
struct PresetTarget {
    NodePointer node;    ///< neither linked nor a preset; null, after one warning, if a name leads nowhere or in a circle
    double scale = 1.0;  ///< product of what the chain's presets scale by
};

/// The node that `start` names in its text `preset`, and so on. `isPreset` tells whether a node names another one, `scaleOf` the
/// factor that it brings. `instead` ends the warning: "it counts as zero".
template <class IsPreset, class ScaleOf>
PresetTarget followPresets(const node::Node& start, Translation& translation, IsPreset&& isPreset, ScaleOf&& scaleOf,
                           std::string_view instead) {
    PresetTarget target;
    const auto isLost = [&](const std::string& why) {
        translation.warn(start, why + "; " + std::string(instead));
        return PresetTarget{};
    };
    const node::Node* preset = &start;
    for (int step = 0; preset; ++step) {
        const std::string& name = preset->text("preset");
        if (name.empty()) return isLost("its preset has no name");
        if (step == kMaxLinks) return isLost("its presets go round in a circle (last: \"" + name + "\")");
        target.scale *= scaleOf(*preset);
        NodePointer next = translation.find(start.family(), name, preset);
        if (!next) return isLost("its preset is \"" + name + "\", but " + translation.missing(start.family(), name));
        target.node = translation.resolve(std::move(next));
        if (!target.node) return target;  // resolve() has said why
        preset = isPreset(*target.node) ? target.node.get() : nullptr;
    }
    return target;
}

}  // namespace nemra::core
