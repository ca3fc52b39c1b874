#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addScalarshaderClasses(Catalogue& catalogue) {
    catalogue.add({.family = "scalarshader", .type = "uniform", .summary = "The same value everywhere"});
    catalogue.addLinked("scalarshader");
}

}  // namespace nemra::node
