/// The outputs that a result can be shown by.
#pragma once

#include <memory>
#include <vector>

#include "engine/node/node.h"

namespace nemra::core {

/// The outputs that an instrument, which may be null, lists; a default picture if it lists none. The first one shows a new
/// result.
std::vector<std::shared_ptr<const node::Node>> outputsOf(const std::shared_ptr<const node::Node>& instrument);

}  // namespace nemra::core
