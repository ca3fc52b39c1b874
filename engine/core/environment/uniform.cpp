#include "engine/core/environment/environment.h"

namespace nemra::core {
namespace {

/// Found by scattered rays alone: their cosine distribution is the best that light sampling could do under an even sky.
EnvironmentModel makeUniform(const node::Node& node, Translation& translation, SpectralTables& tables) {
    const int table = tables.add(makeRadiance(node.child("radiance"), node, translation));
    return {tables.maximum(table) > 0.0 ? table : -1};
}

const bool kKnown = environmentClasses().add("uniform", makeUniform);

}  // namespace
}  // namespace nemra::core
