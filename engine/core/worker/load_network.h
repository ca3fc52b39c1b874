/// The transport's library, loaded at the first use.
#pragma once

#include "engine/network/network.h"

namespace nemra::core::worker {

/// Null after one error message if the library can't be loaded.
const network::Network* loadNetwork();

}  // namespace nemra::core::worker
