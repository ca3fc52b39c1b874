#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

NodeClass simpleClass() {
    return {
        .family = "medium",
        .type = "simple",
        .summary = "Homogeneous medium that refracts, absorbs and scatters",
        .parameters = {choice("absorption_quantity")
                           .option("coefficient", "Natural logarithm of the loss per length, 1/m (Beer 1852)")
                           .option("extinction", "Imaginary part k of the complex index; the coefficient is 4 pi k / wavelength")
                           .option(
                               "internal_transmittance", "Share of light left after a path, 0 to 1, as glass catalogues give it",
                               {real("path_length", 10.0).unit("mm").range(1.0e-6, 1.0e9).doc("Path that the share refers to")})
                           .doc("What the child absorption means"),
                       real("density", 1.0).pure().range(0.0, 1.0e9).doc("Factor on absorption and scattering")},
        .children = {spectrumChild("ior", 1.0, "Refractive index"),
                     spectrumChild("absorption", 0.0, "Absorption, in the chosen quantity"),
                     spectrumChild("scattering", 0.0, "Scattering coefficient, 1/m"),
                     child("phase_function", "scattering", "isotropic", "Into which directions light is scattered")}};
}

NodeClass mieClass() {
    return {.family = "medium",
            .type = "mie",
            .summary = "Host with spherical particles, which scatter independently by Mie's theory (Mie 1908)",
            .parameters = {choice("phase_function")
                               .option("exact", "From the amplitudes of the series, with polarisation")
                               .option("henyey_greenstein", "Henyey and Greenstein (1941) with the exact mean cosine")
                               .doc("How scattering depends on the angle"),
                           integer("size_samples", 64).unit("sizes").range(1, 4096).doc("Sizes that stand for a distribution"),
                           integer("angle_samples", 361)
                               .unit("angles")
                               .range(19, 65536)
                               .doc("Angles from 0 to 180 degrees at which the phase function is kept"),
                           real("wavelength_step", 5.0)
                               .unit("nm")
                               .range(0.1, 1000.0)
                               .doc("Step of the wavelengths at which the series is summed")},
            .children = {child("host", "medium", "simple", "What the particles are suspended in")},
            .listClass = "colloid"};
}

}  // namespace

// Lengths in a medium are those of the scene, in metres; wavelengths are those in vacuum.
void addMediumClasses(Catalogue& catalogue) {
    catalogue.add(simpleClass());
    catalogue.add(mieClass());
    catalogue.addLinked("medium");
}

}  // namespace nemra::node
