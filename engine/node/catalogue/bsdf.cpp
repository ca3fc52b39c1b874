#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addBsdfClasses(Catalogue& catalogue) {
    catalogue.add({.family = "bsdf",
                   .type = "lambertian",
                   .summary = "Ideal diffuse reflector (Lambert 1760), the same on both sides",
                   .children = {child("reflectance", "spectrum", "uniform", "Share of the light that is reflected, 0 to 1",
                                      {{"value", number(0.5)}})}});
    catalogue.add({.family = "bsdf", .type = "black", .summary = "Absorbs all light"});
    catalogue.add({.family = "bsdf", .type = "null", .summary = "Lets all light pass straight through"});
    catalogue.add({.family = "bsdf",
                   .type = "specular",
                   .summary = "Ideal mirror, on both sides",
                   .children = {child("reflectance", "spectrum", "uniform", "Share of the light that is reflected, 0 to 1",
                                      {{"value", number(1.0)}})}});
    catalogue.addLinked("bsdf");
}

}  // namespace nemra::node
