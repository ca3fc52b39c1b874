#include "engine/core/material/material.h"

namespace nemra::core {
namespace {

MaterialModel makeGeneric(const node::Node& node, Translation& translation, SpectralTables& tables) {
    MaterialModel model;
    model.bsdf = makeBsdf(node.child("bsdf"), translation, tables);
    model.emitter = makeEmitter(node.child("emitter"), translation);
    if (model.emitter.sides != 0) {
        const int table = tables.add(model.emitter.radiance);
        if (tables.maximum(table) > 0.0) {
            model.emission = table;
        } else {
            model.emitter.sides = 0;
        }
    }
    return model;
}

const bool kKnown = materialClasses().add("generic", makeGeneric);

}  // namespace
}  // namespace nemra::core
