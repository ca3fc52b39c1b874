/// What surrounds the scene.
#pragma once

#include "engine/core/spectrum/grid.h"

namespace nemra::core {

struct EnvironmentModel {
    int radiance = -1;  ///< table of an environment of the same radiance all around; -1: dark
};

using MakeEnvironment = EnvironmentModel (*)(const node::Node& node, Translation& translation, SpectralTables& tables);
ClassTable<MakeEnvironment>& environmentClasses();
EnvironmentModel makeEnvironment(const NodePointer& node, Translation& translation, SpectralTables& tables);

}  // namespace nemra::core
