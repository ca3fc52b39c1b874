#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addRtfClasses(Catalogue& catalogue) {
    catalogue.add({.family = "rtf", .type = "rtf", .summary = "Measured reflection and transmission"});
    catalogue.addLinked("rtf");
}

}  // namespace nemra::node
