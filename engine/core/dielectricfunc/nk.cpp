#include "engine/core/dielectricfunc/dielectricfunc.h"
#include "engine/core/spectrum/samples.h"
#include "engine/core/translate/preset.h"

namespace nemra::core {
namespace {

bool isPreset(const node::Node& node) { return node.type() == "nk" && node.choice("source") == "preset"; }

ComplexIndex fromTable(const node::Node& node, Translation& translation) {
    const auto table = node.table("samples");
    const std::vector<double> wavelengths = table->numbers("wavelength");
    const auto n = cleanSamples(wavelengths, table->numbers("n"), node, translation);
    const auto k = cleanSamples(wavelengths, table->numbers("k"), node, translation);
    if (n.empty()) {
        translation.warn(node, "has no samples; it counts as vacuum");
        return {};
    }
    const Interpolation interpolation = interpolationByName(node.choice("interpolation"));
    return {sampledCurve(n, interpolation, true), k.empty() ? constantCurve(0.0) : sampledCurve(k, interpolation, true)};
}

ComplexIndex makeNk(const node::Node& node, Translation& translation) {
    const std::string& source = node.choice("source");
    if (source == "spectra") {
        return {makeSpectrum(node.child("n"), translation), makeSpectrum(node.child("k"), translation)};
    }
    if (source == "tabulated") return fromTable(node, translation);
    const PresetTarget target = followPresets(
        node, translation, isPreset, [](const node::Node&) { return 1.0; }, "it counts as vacuum");
    return target.node ? makeDielectric(target.node, translation) : ComplexIndex{};
}

const bool kKnown = dielectricClasses().add("nk", makeNk);

}  // namespace
}  // namespace nemra::core
