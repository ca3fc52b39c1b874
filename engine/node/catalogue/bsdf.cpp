#include "engine/node/catalogue/bsdf_parts.h"
#include "engine/node/catalogue/families.h"

namespace nemra::node {

ChildSpec reflectanceChild(std::string name, double value, std::string doc) {
    return spectrumChild(std::move(name), value, std::move(doc) + ", 0 to 1");
}

ChildSpec roughnessChild(std::string name, std::string type, std::string doc) {
    return child(std::move(name), "roughness", std::move(type), std::move(doc));
}

std::vector<ParameterSpec> orenNayarParameters() {
    return {angle("sigma", 20.0, 0.0, 90.0).doc("Standard deviation of the tilt of the facets; 0 is Lambert's law"),
            choice("formula")
                .option("qualitative", "The short formula, single reflection (Oren and Nayar 1994)")
                .option("full", "The full formula with light reflected twice (Oren and Nayar 1994)")
                .option("fujii", "Without the dark ring of the short one (Fujii 2012)")
                .doc("Which of the formulas")};
}

// Diffuse scattering, and the simplest of all. The other parts have files of their own.
void addBsdfClasses(Catalogue& catalogue) {
    catalogue.add({.family = "bsdf",
                   .type = "lambertian",
                   .summary = "Ideal diffuse reflector (Lambert 1760), the same on both sides",
                   .children = {reflectanceChild("reflectance", 0.5, "Share of the light that is reflected"),
                                filterChild("filter", "Filter over the surface that multiplies the reflectance")}});
    catalogue.add({.family = "bsdf", .type = "black", .summary = "Absorbs all light"});
    catalogue.add({.family = "bsdf", .type = "null", .summary = "Lets all light pass straight through"});
    catalogue.add({.family = "bsdf",
                   .type = "specular",
                   .summary = "Ideal mirror, on both sides",
                   .children = {reflectanceChild("reflectance", 1.0, "Share of the light that is reflected"),
                                filterChild("filter", "Filter over the surface that multiplies the reflectance")}});
    catalogue.add({.family = "bsdf",
                   .type = "oren_nayar",
                   .summary = "Rough diffuse reflector made of Lambertian facets (Oren and Nayar 1994)",
                   .parameters = orenNayarParameters(),
                   .children = {reflectanceChild("reflectance", 0.5, "Reflectance of a facet"),
                                filterChild("filter", "Filter over the surface that multiplies the reflectance")}});
    catalogue.add(
        {.family = "bsdf",
         .type = "lambertian_transmitter",
         .summary = "Ideal diffuser: reflects and transmits by Lambert's law (1760), the same on both sides",
         .children = {reflectanceChild("reflectance", 0.0, "Share of the light that is reflected"),
                      reflectanceChild("transmittance", 0.5, "Share that is transmitted; at most what reflection leaves"),
                      filterChild("reflection_filter", "Filter over the surface that multiplies the reflectance"),
                      filterChild("transmission_filter", "Filter over the surface that multiplies the transmittance")}});
    addGlossyBsdfs(catalogue);
    addCoatedBsdfs(catalogue);
    addFluorescentBsdfs(catalogue);
    addMeasuredBsdfs(catalogue);
    addCombinedBsdfs(catalogue);
    catalogue.addLinked("bsdf");
}

}  // namespace nemra::node
