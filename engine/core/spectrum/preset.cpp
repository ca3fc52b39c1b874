#include "engine/core/translate/preset.h"

#include "engine/core/spectrum/spectrum.h"

namespace nemra::core {
namespace {

SpectralCurve makePreset(const node::Node& node, Translation& translation) {
    const PresetTarget target = followPresets(
        node, translation, [](const node::Node& found) { return found.type() == "preset"; },
        [](const node::Node& preset) { return preset.real("scale"); }, "it counts as zero");
    return target.node ? scaledCurve(makeSpectrum(target.node, translation), target.scale) : constantCurve(0.0);
}

const bool kKnown = spectrumClasses().add("preset", makePreset);

}  // namespace
}  // namespace nemra::core
