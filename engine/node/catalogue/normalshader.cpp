#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addNormalshaderClasses(Catalogue& catalogue) {
    catalogue.add({.family = "normalshader", .type = "uniform", .summary = "Leaves the normal of the geometry as it is"});
    catalogue.addLinked("normalshader");
}

}  // namespace nemra::node
