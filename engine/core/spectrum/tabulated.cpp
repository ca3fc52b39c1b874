#include "engine/core/spectrum/samples.h"

namespace nemra::core {
namespace {

SpectralCurve makeTabulated(const node::Node& node, Translation& translation) {
    const auto table = node.table("samples");
    const auto samples = cleanSamples(table->numbers("wavelength"), table->numbers("value"), node, translation);
    const bool hold = node.choice("extrapolation") == "hold";
    if (samples.empty()) {
        translation.warn(node, "has no samples; it counts as zero");
        return constantCurve(0.0);
    }
    if (samples.size() == 1 && !hold) {
        translation.warn(node, "a single sample is no spectrum unless extrapolation holds it; it counts as zero");
    }
    return scaledCurve(sampledCurve(samples, interpolationByName(node.choice("interpolation")), hold), node.real("scale"));
}

const bool kKnown = spectrumClasses().add("tabulated", makeTabulated);

}  // namespace
}  // namespace nemra::core
