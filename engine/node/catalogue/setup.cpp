#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addSetupClasses(Catalogue& catalogue) {
    catalogue.add(
        {.family = "setup",
         .type = "default",
         .summary = "What is rendered, and how",
         .parameters =
             {integer("max_depth", 0).unit("reflections").range(0, 1000000).doc("Most reflections of a path; 0 sets no limit"),
              integer("roulette_depth", 5)
                  .unit("reflections")
                  .range(0, 1000000)
                  .doc("Reflections after which a path may end by Russian roulette"),
              integer("seed", 0).pure().range(0, 2147483647).doc("Seed of the random numbers"),
              integer("wavelengths_per_path", 4)
                  .unit("wavelengths")
                  .range(4, 8)
                  .oneOf({4, 8})
                  .doc("Wavelengths that a path carries"),
              boolean("polarization", false).doc("Follow the polarisation of light")},
         .children = {child("instrument", "instrument", "stdcam", "What measures"),
                      child("environment", "environment", "black", "Light from outside the scene"),
                      child("ambient_medium", "medium", "simple", "What fills the space between the objects"),
                      child("layers", "layer", "generic", "Root of the layers")}});
    catalogue.addLinked("setup");
}

}  // namespace nemra::node
