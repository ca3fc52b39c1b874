#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addMediumClasses(Catalogue& catalogue) {
    catalogue.add({.family = "medium", .type = "simple", .summary = "Homogeneous medium"});
    catalogue.addLinked("medium");
}

}  // namespace nemra::node
