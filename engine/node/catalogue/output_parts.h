/// The groups in which the outputs are described.
#pragma once

#include "engine/node/catalogue/build.h"

namespace nemra::node {

/// Colours that stand for numbers, and the range that they span. `unit` is that of the range.
std::vector<ParameterSpec> falseColors(const char* unit);

/// Ratings of glare, as a picture and as a report.
void addGlareOutputs(Catalogue& catalogue);

}  // namespace nemra::node
