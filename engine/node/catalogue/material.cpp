#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addMaterialClasses(Catalogue& catalogue) {
    catalogue.add({.family = "material",
                   .type = "generic",
                   .summary = "Surface that scatters and may emit",
                   .children = {child("bsdf", "bsdf", "lambertian", "How the surface scatters light"),
                                child("emitter", "emitter", "lambertian", "What the surface emits; nothing by default")}});
    catalogue.addLinked("material");
}

}  // namespace nemra::node
