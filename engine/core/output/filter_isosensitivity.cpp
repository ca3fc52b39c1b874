// Exposure of a digital camera by ISO 12232:2019: a luminance L exposes the sensor with H = q L t / N^2 (lx s), and the speed S
// by saturation is 78 lx s / Hsat. So the display value, 1 for saturation, is q L t S / (78 N^2).
#include "engine/core/output/picture.h"

namespace nemra::core {
namespace {

void filterIsoSensitivity(const node::Node& node, Picture& picture) {
    double seconds = 0.01;
    double number = 8.0;
    if (node.choice("settings") == "manual") {
        seconds = node.real("shutter_time");
        number = node.real("f_number");
    } else if (const auto instrument = picture.raw ? picture.raw->instrument() : nullptr) {
        if (instrument->findParameter("exposure_time").spec) seconds = instrument->real("exposure_time");
        if (instrument->findParameter("f_number").spec) number = instrument->real("f_number");
    }
    constexpr double kSaturation = 78.0;  // lx s
    const double gain = node.real("lens_factor") * seconds * node.real("iso") / (kSaturation * number * number);
    for (float& value : picture.image.values) value = static_cast<float>(value * gain);
}

const bool kKnown = filterClasses().add("isosensitivity", filterIsoSensitivity);

}  // namespace
}  // namespace nemra::core
