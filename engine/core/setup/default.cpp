#include <algorithm>

#include "engine/core/setup/setup.h"

namespace nemra::core {
namespace {

SetupModel makeDefault(NodePointer node, Translation& translation) {
    SetupModel setup;
    setup.instrument = translation.resolve(node->child("instrument"));
    if (!setup.instrument) throw SceneFault(node->label(), "has no instrument to render with");
    setup.environment = node->child("environment");
    setup.layers = node->child("layers");
    setup.maxDepth = std::max(0, node->integer("max_depth"));
    setup.rouletteDepth = std::max(0, node->integer("roulette_depth"));
    setup.seed = static_cast<std::uint32_t>(node->integer("seed"));
    setup.wavelengths = node->integer("wavelengths_per_path") > 4 ? 8 : 4;
    if (node->boolean("polarization")) {
        translation.warn(*node, "polarization isn't simulated yet; light is taken as unpolarised");
    }
    setup.node = std::move(node);
    return setup;
}

const bool kKnown = setupClasses().add("default", makeDefault);

}  // namespace
}  // namespace nemra::core
