/// What several classes of environments share.
#pragma once

#include "engine/node/catalogue/build.h"

namespace nemra::node {

/// How the sky stands in the world: parameters `up` and `north`.
std::vector<ParameterSpec> orientation();
/// Where the sun is: by angles, by place and time, or by direction.
Parameter sunPosition();

/// Sky models with a sun position.
void addSkies(Catalogue& catalogue);

}  // namespace nemra::node
