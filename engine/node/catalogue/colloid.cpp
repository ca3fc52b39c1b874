#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

Parameter diameter(std::string name, double defaultUm) {
    return real(std::move(name), defaultUm).unit("um").range(1.0e-4, 1.0e4);
}

Parameter concentration() {
    return choice("concentration")
        .option("volume_fraction", "Share of the volume that is particles",
                {real("volume_fraction", 0.01).pure().range(0.0, 0.74).doc("Share of the volume, 0.74 for close packing")})
        .option("number_density", "Particles per volume",
                {real("number_density", 1.0e15).unit("1/m3").range(0.0, 1.0e27).doc("Particles per volume")})
        .option("mass_concentration", "Mass of particles per volume",
                {real("mass_concentration", 1.0).unit("kg/m3").range(0.0, 1.0e5).doc("Mass of particles per volume"),
                 real("particle_density", 1000.0).unit("kg/m3").range(1.0, 1.0e5).doc("Mass density of a particle")})
        .doc("How many particles there are");
}

Parameter sizes() {
    return choice("size_distribution")
        .option("monodisperse", "All of one size", {diameter("diameter", 1.0).doc("Diameter of the particles")})
        .option("lognormal", "Number of particles normal over the logarithm of the size",
                {diameter("median_diameter", 1.0).doc("Half of the particles are smaller"),
                 real("geometric_standard_deviation", 1.5)
                     .pure()
                     .range(1.0, 20.0)
                     .doc("Factor in diameter of one standard deviation; 1 for one size")})
        .option("normal", "Number of particles normal over the size, cut off at 0",
                {diameter("mean_diameter", 1.0).doc("Mean"),
                 real("standard_deviation", 0.1).unit("um").range(0.0, 1.0e4).doc("Standard deviation")})
        .option("gamma", "Gamma distribution of clouds and aerosols (Hansen and Travis 1974)",
                {diameter("effective_diameter", 1.0).doc("Mean diameter weighted by cross-section"),
                 real("effective_variance", 0.1).pure().range(1.0e-4, 0.499).doc("Relative variance weighted by cross-section")})
        .option("power_law", "Number of particles falls as a power of the size (Junge 1963)",
                {diameter("minimum_diameter", 0.1).doc("Smallest diameter"),
                 diameter("maximum_diameter", 10.0).doc("Largest diameter"),
                 real("exponent", 4.0).pure().range(0.0, 20.0).doc("Number per diameter goes as diameter to minus this power")})
        .option("tabulated", "The table sizes")
        .doc("How the sizes of the particles are spread");
}

}  // namespace

void addColloidClasses(Catalogue& catalogue) {
    catalogue.add(
        {.family = "colloid",
         .type = "default",
         .summary = "Spherical particles suspended in a host",
         .parameters = {concentration(), sizes(),
                        table("sizes")
                            .column(diameter("diameter", 1.0).doc("Diameter"))
                            .column(
                                real("number", 1.0).pure().range(0.0, 1.0e30).doc("Relative number of particles per diameter"))
                            .doc("Sizes if they are tabulated, in any order"),
                        choice("structure")
                            .option("homogeneous", "Of one material (Mie 1908)")
                            .option("coated", "Core and shell (Aden and Kerker 1951)",
                                    {real("shell_thickness", 10.0)
                                         .unit("nm")
                                         .range(0.0, 1.0e6)
                                         .doc("Thickness of the shell; the diameter counts it in")})
                            .doc("What a particle consists of")},
         .children = {child("particle", "dielectricfunc", "nk", "Complex index of the particle, or of its core",
                            {{"source", word("spectra")}}),
                      child("shell", "dielectricfunc", "nk", "Complex index of the shell, if there is one",
                            {{"source", word("spectra")}})}});
    catalogue.addLinked("colloid");
}

}  // namespace nemra::node
