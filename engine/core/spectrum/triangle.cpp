#include <algorithm>
#include <cmath>

#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {
namespace {

/// Full width at half maximum equals half the base.
SpectralCurve makeTriangle(const node::Node& node, Translation&) {
    const double center = node.real("center");
    const double width = node.real("width");
    const double peak = node.real("peak");
    return {[=](double lambda) { return peak * std::max(0.0, 1.0 - std::abs(lambda - center) / width); },
            {center - width, center, center + width}};
}

const bool kKnown = spectrumClasses().add("triangle", makeTriangle);

}  // namespace
}  // namespace nemra::core
