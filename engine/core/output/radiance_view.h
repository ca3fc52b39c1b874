/// How Radiance names the view of a camera.
#pragma once

#include <string>

#include "engine/node/node.h"

namespace nemra::core {

/// The options of a VIEW line, such as " -vtv -vp 0 0 0 -vd 0 0 1 -vu 0 1 0 -vh 60 -vv 40" (Ward and Shakespeare, Rendering with
/// Radiance, 1998, section 4.2); empty for an instrument whose projection Radiance has no word for.
std::string radianceView(const node::Node& instrument, int width, int height);

}  // namespace nemra::core
