#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addRoughnessClasses(Catalogue& catalogue) {
    catalogue.add({.family = "roughness", .type = "flat", .summary = "No roughness: a smooth surface"});
    catalogue.addLinked("roughness");
}

}  // namespace nemra::node
