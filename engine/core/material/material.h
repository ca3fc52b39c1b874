/// Materials: a bsdf and an emitter.
#pragma once

#include "engine/core/bsdf/bsdf.h"
#include "engine/core/emitter/emitter.h"

namespace nemra::core {

struct MaterialModel {
    BsdfModel bsdf;
    EmitterModel emitter;
    int emission = -1;  ///< table of the emitter's radiance; -1: dark
};

using MakeMaterial = MaterialModel (*)(const node::Node& node, Translation& translation, SpectralTables& tables);
ClassTable<MakeMaterial>& materialClasses();
/// Without a node: the neutral reflector that stands for a material that isn't given.
MaterialModel makeMaterial(const NodePointer& node, Translation& translation, SpectralTables& tables);

}  // namespace nemra::core
