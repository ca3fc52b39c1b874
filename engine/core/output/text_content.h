/// Texts of watermarks and reports.
#pragma once

#include <string>

#include "engine/core/result/raw.h"

namespace nemra::core {

/// The content of a node of the family text, with {instrument}, {output}, {width}, {height}, {spp}, {time} (s) and {version}
/// filled in if the node says so. `raw` may be null: then they are left empty.
std::string textOf(const node::Node& text, const Raw* raw);

}  // namespace nemra::core
