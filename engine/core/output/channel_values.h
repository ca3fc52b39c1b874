/// The channels of a result as an output shows them: in a light quantity, and after the output's filters.
#pragma once

#include "engine/core/output/picture.h"

namespace nemra::core {

struct ChannelValues {
    int width = 0;
    int height = 0;
    std::vector<Plane> channels;

    /// The channel of that name; for an empty name the luminance, the energy, or the first one. Null if there is none.
    const Plane* find(std::string_view name) const noexcept;
};

/// Without filters, the sensor's channels; meta channels, which have no quantity, if `withMeta`; for a sensor of bands also the
/// luminance as "Y" if `withLuminance`. With filters, what these made of it: X, Y, Z of the picture, behind the channels that
/// spectocustom or spectraltohv made, or the sensor's channels as far as filters act on these. A quantity that the result doesn't
/// have gives a warning and counts as raw. `quantity` is the name of an option of the outputs' parameter of that name.
struct ChannelChoice {
    std::string quantity = "raw";
    bool withMeta = false;
    bool withLuminance = false;
};
ChannelValues channelValues(const Raw& raw, const node::Node& output, const ChannelChoice& choice, bool fast);

}  // namespace nemra::core
