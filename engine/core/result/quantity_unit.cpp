#include "engine/core/result/quantity_unit.h"

namespace nemra::core {

std::string unitOf(const Channel& channel, nemra_quantity_t quantity) {
    if (quantity == NEMRA_QUANTITY_RAW || channel.kind == ChannelKind::unknown) return channel.unit;
    if (quantity == NEMRA_QUANTITY_COMPUTED_BSDF) return "sr^-1";
    const bool luminous = channel.kind == ChannelKind::luminous;
    const std::string perBand = channel.unit.ends_with(".nm^-1") || channel.kind == ChannelKind::spectral ? ".nm^-1" : "";
    switch (quantity) {
        case NEMRA_QUANTITY_SENSOR_IRRADIANCE:
        case NEMRA_QUANTITY_SCENE_IRRADIANCE:
            return (luminous ? "lx" : "W.m^-2") + perBand;
        case NEMRA_QUANTITY_SCENE_RADIANCE:
            return (luminous ? "cd.m^-2" : "W.m^-2.sr^-1") + perBand;
        case NEMRA_QUANTITY_SENSOR_POWER:
            return (luminous ? "lm" : "W") + perBand;
        case NEMRA_QUANTITY_SENSOR_EXPOSURE:
            return (luminous ? "lx.s" : "J.m^-2") + perBand;
        default:
            return channel.unit;
    }
}

}  // namespace nemra::core
