/// What an OpenEXR file of a result says of itself.
#pragma once

#include <ImfHeader.h>

#include <string>

#include "engine/core/output/color_space.h"
#include "engine/core/result/raw.h"

namespace nemra::core {

/// "S0.550,000000nm" for a band, by its centre; the layout wants a comma, since a dot divides layers. Else the channel's name.
std::string exrChannelName(const Channel& channel);

/// Are these X, Y and Z of an observer, whatever else is there?
bool isTristimulus(const Film& film);

/// Attributes: the layout's own, the standard ones, and those that no standard has ("sarvo:..."): valueUnit, quantity, bandLimits
/// ("545.000000nm:555.000000nm;" for each band), instrument, instrumentType. `space` is that of R, G, B.
void describeExr(Imf::Header& header, const Raw& raw, const Film& film, const ColorSpace& space);

}  // namespace nemra::core
