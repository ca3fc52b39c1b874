#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {
namespace {

SpectralCurve makeSquare(const node::Node& node, Translation& translation) {
    const double minimum = node.real("minimum");
    const double maximum = node.real("maximum");
    const double value = node.real("value");
    if (!(minimum < maximum)) translation.warn(node, "minimum isn't below maximum; the spectrum is zero");
    return {[=](double lambda) { return lambda >= minimum && lambda < maximum ? value : 0.0; }, {minimum, maximum}};
}

const bool kKnown = spectrumClasses().add("square", makeSquare);

}  // namespace
}  // namespace nemra::core
