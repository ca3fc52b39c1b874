#include "engine/core/bsdf/bsdf.h"

namespace nemra::core {
namespace {

/// Reflects on both sides, evenly in all directions (Lambert 1760). The kernels know it by heart.
BsdfModel makeLambertian(const node::Node& node, Translation& translation, SpectralTables& tables) {
    return {SurfaceKind::lambertian, bakeReflectance(node.child("reflectance"), node, translation, tables), nullptr, false};
}

const bool kKnown = bsdfClasses().add("lambertian", makeLambertian);

}  // namespace
}  // namespace nemra::core
