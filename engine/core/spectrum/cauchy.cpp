#include "engine/core/spectrum/dispersion.h"

namespace nemra::core {
namespace {

SpectralCurve makeCauchy(const node::Node& node, Translation&) {
    return {Cauchy{node.real("a"), node.real("b"), node.real("c")}, {}};
}

const bool kKnown = spectrumClasses().add("cauchy", makeCauchy);

}  // namespace
}  // namespace nemra::core
