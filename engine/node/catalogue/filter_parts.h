/// The groups in which the filters are described.
#pragma once

#include "engine/node/catalogue/build.h"

namespace nemra::node {

/// From the sensor's channels to what is shown: responses of observers and meters.
void addResponseFilters(Catalogue& catalogue);
/// From luminances to display values.
void addToneFilters(Catalogue& catalogue);
/// What eye and picture do to neighbouring pixels.
void addPictureFilters(Catalogue& catalogue);

}  // namespace nemra::node
