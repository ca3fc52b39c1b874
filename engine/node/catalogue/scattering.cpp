#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addScatteringClasses(Catalogue& catalogue) {
    catalogue.add({.family = "scattering", .type = "isotropic", .summary = "Scatters alike into all directions"});
    catalogue.addLinked("scattering");
}

}  // namespace nemra::node
