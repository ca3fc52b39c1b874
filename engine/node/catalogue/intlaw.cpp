#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addIntlawClasses(Catalogue& catalogue) {
    catalogue.add({.family = "intlaw", .type = "fresnel", .summary = "Smooth interface between two dielectrics (Fresnel 1823)"});
    catalogue.addLinked("intlaw");
}

}  // namespace nemra::node
