#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addAvspectrumClasses(Catalogue& catalogue) {
    catalogue.add({.family = "avspectrum", .type = "table", .summary = "Values by wavelength and angle"});
    catalogue.addLinked("avspectrum");
}

}  // namespace nemra::node
