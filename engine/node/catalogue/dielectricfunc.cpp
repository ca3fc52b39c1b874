#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addDielectricfuncClasses(Catalogue& catalogue) {
    catalogue.add({.family = "dielectricfunc", .type = "nk", .summary = "Complex refractive index n + ik"});
    catalogue.addLinked("dielectricfunc");
}

}  // namespace nemra::node
