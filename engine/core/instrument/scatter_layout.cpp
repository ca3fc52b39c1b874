#include "engine/core/instrument/scatter_layout.h"

namespace nemra::core {

ScatterLayout scatterLayoutOf(const node::Node& instrument) {
    const std::string& component = instrument.choice("component");
    ScatterLayout layout{nullptr, nullptr, component != "transmission", component != "reflection",
                         instrument.choice("side") == "front"};
    const std::string& basis = instrument.choice("basis");
    if (basis == "klems") {
        const auto& rings = klemsRings(instrument.choice("klems_patches"));
        layout.incident = ringBasis(rings);
        layout.outgoing = ringBasis(rings);
    } else if (basis == "equal_area") {
        layout.incident = equalAreaBasis(instrument.integer("resolution"));
        layout.outgoing = equalAreaBasis(instrument.integer("resolution"));
    } else {
        layout.incident = beamGrid(instrument.integer("incident_theta_count"), instrument.integer("incident_phi_count"));
        layout.outgoing = cellGrid(instrument.integer("outgoing_theta_count"), instrument.integer("outgoing_phi_count"));
    }
    return layout;
}

}  // namespace nemra::core
