#include "engine/node/catalogue/bsdf_parts.h"

namespace nemra::node {

void addCombinedBsdfs(Catalogue& catalogue) {
    catalogue.add({.family = "bsdf",
                   .type = "blend",
                   .summary = "Two BSDFs side by side in shares that can vary over the surface",
                   .children = {child("first", "bsdf", "lambertian", "BSDF where the weight is 0"),
                                child("second", "bsdf", "lambertian", "BSDF where the weight is 1"),
                                scalarChild("weight", 0.5, "Share of the second, 0 to 1")}});
    catalogue.add(
        {.family = "bsdf",
         .type = "additive",
         .summary = "Sum of several BSDFs; black without any",
         .parameters = {listWeights("Factor on each BSDF; the caller sees to it that no more light goes out than came in")},
         .listClass = "bsdf"});
    catalogue.add({.family = "bsdf",
                   .type = "doublesided",
                   .summary = "One BSDF for light on the front, another for light on the back",
                   .children = {child("front", "bsdf", "lambertian", "For light on the side to which the normals point"),
                                child("back", "bsdf", "lambertian", "For light on the other side")}});
    catalogue.add({.family = "bsdf",
                   .type = "switch",
                   .summary = "One of several BSDFs; black if none is selected",
                   .parameters = {listSelection()},
                   .listClass = "bsdf"});
}

}  // namespace nemra::node
