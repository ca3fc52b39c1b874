#include "engine/node/catalogue/bsdf_parts.h"

namespace nemra::node {

namespace {

Parameter coatThickness() {
    return real("coat_thickness", 50.0)
        .unit("um")
        .range(0.0, 1.0e6)
        .doc("Thickness of the coat; only its absorption asks for it");
}

/// The layer of lacquer on top of a body.
std::vector<ChildSpec> coat() {
    return {child("coat_law", "intlaw", "fresnel", "Law of the outer face of the coat; its inside is the coat"),
            roughnessChild("coat_roughness", "flat", "Facets of the outer face of the coat"),
            spectrumChild("coat_absorption", 0.0, "Absorption coefficient of the coat, 1/m")};
}

std::vector<ChildSpec> coatOver(std::vector<ChildSpec> body) {
    for (ChildSpec& layer : coat()) body.push_back(std::move(layer));
    return body;
}

NodeClass coatedDiffuseClass() {
    return {.family = "bsdf",
            .type = "coateddiffuse",
            .summary = "Diffuse body under a clear coat, with all reflections between them (Saunderson 1942)",
            .parameters = {coatThickness()},
            .children = coatOver({reflectanceChild("reflectance", 0.5, "Reflectance of the body, without the coat"),
                                  filterChild("filter", "Filter over the surface that multiplies the body's reflectance")})};
}

NodeClass carPaintClass() {
    return {.family = "bsdf",
            .type = "carpaint",
            .summary = "Pigment, metallic or interference flakes and a clear coat (Ershov et al. 2001)",
            .parameters = {coatThickness(),
                           share("flake_coverage", 0.5).doc("Share of the light that meets a flake before the pigment"),
                           choice("sparkle")
                               .option("none", "Flakes are too small to be told apart")
                               .option("glints", "Single flakes flash up",
                                       {real("flake_diameter", 20.0).unit("um").range(0.1, 1.0e5).doc("Diameter of a flake"),
                                        integer("seed", 0).pure().range(0, 2147483647).doc("Another seed gives other flakes")})
                               .doc("Whether single flakes can be seen")},
            .children =
                coatOver({reflectanceChild("pigment_reflectance", 0.2, "Reflectance of the diffuse pigment"),
                          child("flake_law", "intlaw", "cfresnel", "Law by which a flake reflects; thinfilm for effect pigments"),
                          roughnessChild("flake_orientation", "beckmann", "Distribution of the flakes' normals"),
                          filterChild("filter", "Filter over the surface that multiplies the pigment's reflectance")})};
}

/// Light is absorbed at one wavelength and given off at a longer one.
std::vector<ParameterSpec> reradiation() {
    return {choice("source")
                .option("spectra", "Excitation times emission, from the children of these names",
                        {share("quantum_yield", 0.8).doc("Photons given off per photon absorbed")})
                .option("matrix", "The table reradiation")
                .doc("Where the fluorescence comes from"),
            table("reradiation")
                .column(wavelength("excitation", 400.0).doc("Wavelength that is absorbed"))
                .column(wavelength("emission", 550.0).doc("Wavelength that is given off"))
                .column(real("radiance_factor", 0.0)
                            .unit("1/nm")
                            .range(0.0, 100.0)
                            .doc("Power given off per wavelength of emission over the power that comes in"))
                .doc("Bispectral radiance factor (Donaldson 1954), without the reflected light, in any order, on a full grid")};
}

std::vector<ChildSpec> fluorescence() {
    return {reflectanceChild("reflectance", 0.5, "Reflectance without a change of wavelength"),
            reflectanceChild("excitation", 0.0, "Share of the light that excites the dye, by wavelength"),
            spectrumChild("emission", 1.0, "Power that is given off by wavelength; its level doesn't matter"),
            filterChild("filter", "Filter over the surface that multiplies reflectance and fluorescence")};
}

}  // namespace

void addCoatedBsdfs(Catalogue& catalogue) {
    catalogue.add(coatedDiffuseClass());
    catalogue.add(carPaintClass());
}

void addFluorescentBsdfs(Catalogue& catalogue) {
    catalogue.add({.family = "bsdf",
                   .type = "fluo_lambertian",
                   .summary = "Diffuse reflector (Lambert 1760) that fluoresces",
                   .parameters = reradiation(),
                   .children = fluorescence()});
    catalogue.add({.family = "bsdf",
                   .type = "fluo_oren_nayar",
                   .summary = "Rough diffuse reflector (Oren and Nayar 1994) that fluoresces",
                   .parameters = joined(orenNayarParameters(), reradiation()),
                   .children = fluorescence()});
}

}  // namespace nemra::node
