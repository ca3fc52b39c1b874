#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addEnvironmentClasses(Catalogue& catalogue) {
    catalogue.add({.family = "environment", .type = "black", .summary = "No light from outside"});
    catalogue.add(
        {.family = "environment",
         .type = "uniform",
         .summary = "The same radiance from all directions",
         .children = {child("radiance", "spectrum", "uniform", "Spectral radiance, W/(m2 sr nm)", {{"value", number(1.0)}})}});
    catalogue.addLinked("environment");
}

}  // namespace nemra::node
