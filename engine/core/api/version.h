/// Which engine this is.
#pragma once

namespace nemra::core {

/// "Nemra 2024 R1 (0.1.0-c0435640abcd)": product, year and release of the interface, version of the engine, first twelve digits
/// of the source's commit, or twelve zeros where that isn't known.
extern const char* const kVersionText;

}  // namespace nemra::core
