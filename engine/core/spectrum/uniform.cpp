#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {
namespace {

SpectralCurve makeUniform(const node::Node& node, Translation&) { return constantCurve(node.real("value")); }

const bool kKnown = spectrumClasses().add("uniform", makeUniform);

}  // namespace
}  // namespace nemra::core
