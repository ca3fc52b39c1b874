#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

/// Mean cosine of the scattering angle: positive scatters forwards. At 1 all light would go straight on.
Parameter asymmetry(std::string name) { return real(std::move(name), 0.0).pure().range(-0.999, 0.999); }

Parameter sampleWavelength() { return wavelength("wavelength", 550.0).doc("Wavelength in vacuum"); }

NodeClass tabulatedClass() {
    return {.family = "scattering",
            .type = "tabulated",
            .summary = "Measured phase function by wavelength and scattering angle",
            .parameters = {table("samples")
                               .column(wavelength("wavelength", 550.0).doc("Wavelength; left out: holds at every wavelength"))
                               .column(angle("angle", 0.0, 0.0, 180.0).doc("Scattering angle, 0 straight on"))
                               .column(real("value", 0.0).unit("1/sr").range(0.0, 1.0e12).doc("Value of the phase function"))
                               .doc("The samples, in any order, on a full grid of wavelengths and angles; without samples "
                                    "scattering is isotropic"),
                           tableInterpolation(),
                           choice("normalization")
                               .option("unit", "Scaled at each wavelength so that its integral over all directions is 1")
                               .option("none", "As given; what is missing to 1 is absorbed")
                               .doc("What fixes the level")}};
}

}  // namespace

// Phase functions: the share of scattered light per solid angle.
void addScatteringClasses(Catalogue& catalogue) {
    catalogue.add({.family = "scattering", .type = "isotropic", .summary = "Scatters alike into all directions"});
    catalogue.add({.family = "scattering",
                   .type = "rayleigh",
                   .summary = "Scattering by particles far smaller than the wavelength (Rayleigh 1871; Chandrasekhar 1950)",
                   .parameters = {real("depolarization", 0.0)
                                      .pure()
                                      .range(0.0, 0.5)
                                      .doc("Depolarisation ratio for natural light; 0.0279 for air (Young 1981)")}});
    catalogue.add({.family = "scattering",
                   .type = "henyeygreenstein",
                   .summary = "One lobe of given mean cosine (Henyey and Greenstein 1941)",
                   .parameters = {asymmetry("g").doc("Mean cosine of the scattering angle; positive scatters forwards")}});
    catalogue.add({.family = "scattering",
                   .type = "henyeygreensteinspectral",
                   .summary = "Henyey and Greenstein (1941) with a mean cosine that depends on the wavelength",
                   .parameters = {table("samples")
                                      .column(sampleWavelength())
                                      .column(asymmetry("g").doc("Mean cosine of the scattering angle"))
                                      .doc("The samples, in any order; without samples scattering is isotropic"),
                                  tableInterpolation()}});
    catalogue.add(
        {.family = "scattering",
         .type = "gegenbauerspectral",
         .summary = "Gegenbauer kernel, a lobe with a free tail (Reynolds and McCormick 1980), by wavelength",
         .parameters = {
             table("samples")
                 .column(sampleWavelength())
                 .column(asymmetry("g").doc("Width of the lobe; the mean cosine if alpha is 0.5"))
                 .column(real("alpha", 0.5).pure().range(-0.499, 100.0).doc("Tail of the lobe; 0.5 is Henyey and Greenstein's"))
                 .doc("The samples, in any order; without samples scattering is isotropic"),
             tableInterpolation()}});
    catalogue.add(tabulatedClass());
    catalogue.add({.family = "scattering",
                   .type = "additive",
                   .summary = "Weighted mean of several phase functions; isotropic without any",
                   .parameters = {listWeights("Share of each phase function; divided by their sum")},
                   .listClass = "scattering"});
    catalogue.addLinked("scattering");
}

}  // namespace nemra::node
