// Channels of the user's own: each answers as one spectrum of the sensor's list says.
#include <algorithm>

#include "engine/core/result/light_view.h"
#include "engine/core/sensor/sensor.h"
#include "engine/core/spectrum/response.h"

namespace nemra::core {
namespace {

/// Cells of a grid are up to 1 nm wide; responses with edges inside of them get finer ones.
constexpr int kRefinement = 8;

/// Zero outside of the band.
SpectralCurve within(SpectralCurve curve, double first, double last) {
    curve.knots.insert(curve.knots.end(), {first, last});
    std::sort(curve.knots.begin(), curve.knots.end());
    return {[value = std::move(curve.value), first, last](double nm) { return nm >= first && nm <= last ? value(nm) : 0.0; },
            std::move(curve.knots)};
}

bool hasChannel(const Sensor& sensor, const std::string& name) {
    return std::any_of(sensor.channels.begin(), sensor.channels.end(), [&](const Channel& c) { return c.name == name; });
}

/// The spectrum's own name, else that of the node that it links to, else its number from 1; of equal names the later ones end in
/// _2, _3, since channels are asked for by name.
std::string channelName(const NodePointer& spectrum, Translation& translation, const Sensor& sensor) {
    std::string name = spectrum->name();
    if (name.empty()) {
        if (const NodePointer target = translation.resolve(spectrum)) name = target->name();
    }
    if (name.empty()) name = "response " + std::to_string(sensor.channels.size() + 1);
    std::string free = name;
    for (int i = 2; hasChannel(sensor, free); ++i) free = name + "_" + std::to_string(i);
    if (free != name) {
        translation.warn(*spectrum, "another response has this name; the channel is \"" + free + "\"");
    }
    return free;
}

Sensor makeCustom(const node::Node& node, Translation& translation) {
    const double first = node.real("minimum");
    const double last = node.real("maximum");
    if (!(first > 0.0 && first < last)) throw SceneFault(node.label(), "minimum must be positive and below maximum (nm)");
    const auto spectra = node.list();
    if (spectra.empty()) throw SceneFault(node.label(), "it lists no response, so it has no channel");
    const bool isLuminous = node.choice("response") == "luminous";
    const double factor = isLuminous ? node.real("efficacy") : 1.0;
    const std::string& normalization = node.choice("normalization");
    const std::string unit = std::string(isLuminous ? "cd.m^-2" : "W.m^-2.sr^-1") + (normalization == "area" ? ".nm^-1" : "");
    Sensor sensor;
    sensor.grid = gridBetween(first, last);
    SpectralTables baked(sensor.grid);
    for (const NodePointer& spectrum : spectra) {
        const SpectralCurve response = within(makeSpectrum(spectrum, translation), first, last);
        const double norm = responseNorm(normalization, response, first, last);
        if (!(norm > 0.0)) {
            throw SceneFault(spectrum->label(),
                             "this response can't be normalised: it is zero, or its integral isn't positive, "
                             "between the sensor's minimum and maximum");
        }
        sensor.channels.push_back({channelName(spectrum, translation, sensor),
                                   isLuminous ? ChannelKind::luminous : ChannelKind::energy, 0.0, 0.0, unit});
        sensor.responses.push_back(scaledCurve(response, factor / norm));
        baked.add(sensor.responses.back());
    }
    if (baked.tooCoarse()) sensor.grid = sensor.grid.refined(kRefinement);
    // What stands for a pixel where one number does is looked for by these names in results, too.
    Film named;
    named.channels = sensor.channels;
    sensor.leading = referenceChannel(named);
    return sensor;
}

const bool kKnown = sensorClasses().add("custom", makeCustom);

}  // namespace
}  // namespace nemra::core
