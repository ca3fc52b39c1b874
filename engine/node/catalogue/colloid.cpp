#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addColloidClasses(Catalogue& catalogue) {
    catalogue.add({.family = "colloid", .type = "default", .summary = "Particles suspended in a host"});
    catalogue.addLinked("colloid");
}

}  // namespace nemra::node
