/// What is to be rendered, and how.
#pragma once

#include <cstdint>

#include "engine/core/translate/class_table.h"
#include "engine/core/translate/translation.h"

namespace nemra::core {

struct SetupModel {
    NodePointer node;
    NodePointer instrument;  ///< resolved
    NodePointer environment;
    NodePointer layers;
    int maxDepth = 0;  ///< reflections; 0: unlimited
    int rouletteDepth = 5;
    std::uint32_t seed = 0;
    int wavelengths = 4;
};

using MakeSetup = SetupModel (*)(NodePointer node, Translation& translation);
ClassTable<MakeSetup>& setupClasses();

/// The setup of that name; "" takes the scene's active one, else the only one. Throws SceneFault if there is none.
SetupModel chooseSetup(const std::string& name, Translation& translation);

}  // namespace nemra::core
