/// How a surface shines.
#pragma once

#include <cstdint>

#include "engine/core/kernel/kernel_scene.h"
#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {

struct EmitterModel {
    SpectralCurve radiance{constantCurve(0.0)};  ///< W/(m2 sr nm), for a surface of 1 m2 if `ofWholeSurface`
    bool ofWholeSurface = false;                 ///< a flux is shared by the whole surface: divide by its area in m2
    std::uint8_t sides = 0;                      ///< kEmitsFront, kEmitsBack; 0: dark
};

using MakeEmitter = EmitterModel (*)(const node::Node& node, Translation& translation);
ClassTable<MakeEmitter>& emitterClasses();
EmitterModel makeEmitter(const NodePointer& node, Translation& translation);

}  // namespace nemra::core
