#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addLayerClasses(Catalogue& catalogue) {
    catalogue.add({.family = "layer",
                   .type = "generic",
                   .summary = "Group of instances that are switched together; layers can contain layers",
                   .parameters = {boolean("visible", true).doc("Seen directly by the instrument"),
                                  boolean("light", true).doc("Emitters of its instances shine"),
                                  boolean("enabled", true).doc("Takes part in the simulation at all")},
                   .listClass = "layer"});
    catalogue.addLinked("layer");
}

}  // namespace nemra::node
