/// From a password to the keys of both ends.
#pragma once

#include "engine/network/network.h"

namespace nemra::network {

Keys deriveKeysOf(std::string_view password);

}  // namespace nemra::network
