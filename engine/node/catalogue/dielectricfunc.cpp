#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

Parameter ior(std::string name) { return real(std::move(name), 1.0).pure().range(0.0, 100.0); }

NodeClass nkClass() {
    return {.family = "dielectricfunc",
            .type = "nk",
            .summary = "Complex refractive index n + ik, k positive where light is absorbed",
            .parameters = {choice("source")
                               .option("tabulated", "The samples of the table", {tableInterpolation()})
                               .option("preset", "A measured material of a library",
                                       {text("preset").doc("Name of the material in a library, for example Au_johnson")})
                               .option("spectra", "The children n and k")
                               .doc("Where the index comes from"),
                           table("samples")
                               .column(wavelength("wavelength", 550.0).doc("Wavelength in vacuum"))
                               .column(ior("n").doc("Refractive index"))
                               .column(real("k", 0.0).pure().range(0.0, 1000.0).doc("Extinction coefficient"))
                               .doc("The samples if they are the source, in any order; without samples n is 1 and k is 0")},
            .children = {spectrumChild("n", 1.0, "Refractive index, if the spectra are the source"),
                         spectrumChild("k", 0.0, "Extinction coefficient, if the spectra are the source")}};
}

NodeClass naClass() {
    return {.family = "dielectricfunc",
            .type = "na",
            .summary = "Refractive index and absorbance, as a spectrophotometer gives it",
            .parameters =
                {choice("source")
                     .option("tabulated", "The samples of the table", {tableInterpolation()})
                     .option("spectra", "The children n and a")
                     .doc("Where index and absorption come from"),
                 table("samples")
                     .column(wavelength("wavelength", 550.0).doc("Wavelength in vacuum"))
                     .column(ior("n").doc("Refractive index"))
                     .column(real("a", 0.0).pure().range(0.0, 1.0e12).doc("Absorption in the chosen quantity"))
                     .doc("The samples if they are the source, in any order; without samples n is 1 and nothing is absorbed"),
                 choice("quantity")
                     .option("absorption_coefficient", "Natural logarithm of the loss per length, 1/m (Beer 1852)")
                     .option("absorbance", "Decadic logarithm of the loss over a path",
                             {real("path_length", 10.0).unit("mm").range(1.0e-6, 1.0e9).doc("Path of light in the cell")})
                     .option("molar_absorptivity", "Decadic, per path and concentration, l/(mol cm)",
                             {real("concentration", 1.0e-3).unit("mol/l").range(0.0, 1.0e3).doc("Concentration of the solute")})
                     .option("internal_transmittance", "Share of light left after a path, 0 to 1, without reflections",
                             {real("path_length", 10.0).unit("mm").range(1.0e-6, 1.0e9).doc("Path of light in the sample")})
                     .doc("What a means")},
            .children = {spectrumChild("n", 1.0, "Refractive index, if the spectra are the source"),
                         spectrumChild("a", 0.0, "Absorption in the chosen quantity, if the spectra are the source")}};
}

}  // namespace

void addDielectricfuncClasses(Catalogue& catalogue) {
    catalogue.add(nkClass());
    catalogue.add(naClass());
    catalogue.addLinked("dielectricfunc");
}

}  // namespace nemra::node
