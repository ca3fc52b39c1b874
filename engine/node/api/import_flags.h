/// The number that an import takes along through the flat interface.
#pragma once

#include <cstdint>

#include "engine/node/scene.h"
#include "module/flat/nemra_scene.h"

namespace nemra::node {

/// False for a number that isn't a sum of NEMRA_IMPORT flags, at most one of them a unit and at most one an axis.
inline bool applyImportFlags(Import& import, std::int32_t flags) {
    const std::int32_t unit = flags & NEMRA_IMPORT_UNIT_MASK;
    const std::int32_t up = flags & NEMRA_IMPORT_UP_MASK;
    const bool isKnown = (flags & ~(NEMRA_IMPORT_UNIT_MASK | NEMRA_IMPORT_UP_MASK | NEMRA_IMPORT_NO_INSTANCES)) == 0;
    if (!isKnown || unit > NEMRA_IMPORT_FT || up > NEMRA_IMPORT_UP_Z) return false;
    import.frame.unit = static_cast<LengthUnit>(unit);
    import.frame.up = static_cast<UpAxis>(up / NEMRA_IMPORT_UP_Y);
    import.instances = (flags & NEMRA_IMPORT_NO_INSTANCES) == 0;
    return true;
}

}  // namespace nemra::node
