/// Units of what a channel holds.
#pragma once

#include <string>

#include "engine/core/film/film.h"
#include "module/flat/nemra_types.h"

namespace nemra::core {

/// The unit of that quantity of a channel, such as "lm.m^-2" for the sensor irradiance of a luminous one; raw values have the
/// channel's own unit.
std::string unitOf(const Channel& channel, nemra_quantity_t quantity);

}  // namespace nemra::core
