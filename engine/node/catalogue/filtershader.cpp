#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addFiltershaderClasses(Catalogue& catalogue) {
    catalogue.add({.family = "filtershader", .type = "uniform", .summary = "The same transmission everywhere"});
    catalogue.addLinked("filtershader");
}

}  // namespace nemra::node
