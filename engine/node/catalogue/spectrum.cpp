#include "engine/node/catalogue/families.h"

namespace nemra::node {

namespace {

/// A level whose unit depends on what the spectrum stands for.
Parameter level(std::string name, double defaultValue) { return real(std::move(name), defaultValue).pure().range(0.0, 1.0e15); }

}  // namespace

// The value of a spectrum has the unit of its use: 1 for a reflectance or an index, W/(m2 sr nm) for a radiance.
void addSpectrumClasses(Catalogue& catalogue) {
    catalogue.add({.family = "spectrum",
                   .type = "uniform",
                   .summary = "The same value at every wavelength",
                   .parameters = {level("value", 1.0).doc("Value, in the unit of the spectrum's use")}});
    catalogue.add({.family = "spectrum",
                   .type = "triangle",
                   .summary = "Triangular band",
                   .parameters = {wavelength("center", 550.0).doc("Wavelength of the peak"),
                                  real("width", 50.0).unit("nm").range(1.0e-3, 1.0e6).doc("Full width at half maximum"),
                                  level("peak", 1.0).doc("Value at the peak, in the unit of the spectrum's use")}});
    catalogue.add({.family = "spectrum",
                   .type = "square",
                   .summary = "One value inside a band and zero outside",
                   .parameters = {wavelength("minimum", 500.0).doc("Lower end of the band"),
                                  wavelength("maximum", 600.0).doc("Upper end of the band"),
                                  level("value", 1.0).doc("Value inside the band, in the unit of the spectrum's use")}});
    catalogue.add({.family = "spectrum",
                   .type = "tabulated",
                   .summary = "Measured values at given wavelengths",
                   .parameters = {table("samples")
                                      .column(wavelength("wavelength", 550.0).doc("Wavelength of the sample"))
                                      .column(real("value", 0.0).pure().range(-1.0e15, 1.0e15).doc("Value of the sample"))
                                      .doc("The samples, in any order; a spectrum without samples is zero"),
                                  choice("interpolation")
                                      .option("linear", "Straight lines between the samples")
                                      .option("nearest", "Value of the nearest sample")
                                      .option("cubic", "Monotone cubic curve through the samples")
                                      .doc("What lies between two samples"),
                                  choice("extrapolation")
                                      .option("zero", "Zero")
                                      .option("hold", "Value of the first or last sample")
                                      .doc("What lies outside the samples"),
                                  real("scale", 1.0).pure().range(0.0, 1.0e15).doc("Factor on all values")}});
    catalogue.add({.family = "spectrum",
                   .type = "cie-xyz",
                   .summary = "Smooth spectrum with given CIE 1931 tristimulus values",
                   .parameters = {real("x", 0.95).pure().range(0.0, 1.0e6).doc("Tristimulus value X"),
                                  real("y", 1.0).pure().range(0.0, 1.0e6).doc("Tristimulus value Y, 1 for a perfect white"),
                                  real("z", 1.09).pure().range(0.0, 1.0e6).doc("Tristimulus value Z")}});
    catalogue.add({.family = "spectrum",
                   .type = "rgb",
                   .summary = "Smooth spectrum of a colour, by the basis of Mallett and Yuksel (2019)",
                   .parameters = {color("color", "srgb", 0.5F, 0.5F, 0.5F).doc("The colour")}});
    catalogue.add(
        {.family = "spectrum",
         .type = "abbenumber",
         .summary = "Refractive index of a glass by its index and Abbe number: two-term Cauchy curve through the lines F, d, C",
         .parameters = {real("n_d", 1.5168).pure().range(1.0, 10.0).doc("Index at the helium d line, 587.5618 nm"),
                        real("v_d", 64.17).pure().range(1.0, 1.0e6).doc("Abbe number (n_d - 1) / (n_F - n_C)")}});
    catalogue.add({.family = "spectrum",
                   .type = "cauchy",
                   .summary = "Refractive index a + b / lambda^2 + c / lambda^4 (Cauchy 1836)",
                   .parameters = {real("a", 1.5046).pure().range(0.0, 100.0).doc("Constant term"),
                                  real("b", 4217.0).unit("nm2").range(-1.0e9, 1.0e9).doc("Coefficient of 1 / lambda^2"),
                                  real("c", 0.0).unit("nm4").range(-1.0e15, 1.0e15).doc("Coefficient of 1 / lambda^4")}});
    catalogue.add(
        {.family = "spectrum",
         .type = "blackbody",
         .summary = "Planck radiator (Planck 1901)",
         .parameters = {real("temperature", 6504.0).unit("K").range(1.0, 1.0e5).doc("Absolute temperature"),
                        choice("normalization")
                            .option("none", "Radiance of the black body, W/(m2 sr nm)")
                            .option("peak", "Value 1 at the maximum of the curve")
                            .option("luminance", "Scaled to a given luminance",
                                    {real("luminance", 1.0).unit("cd/m2").range(0.0, 1.0e12).doc("Luminance of the source")})
                            .doc("What fixes the level of the curve")}});
    catalogue.add(
        {.family = "spectrum",
         .type = "preset",
         .summary = "Measured or standard spectrum from a library, by name",
         .parameters = {text("preset", "cie_d65")
                            .doc("Name of the spectrum in the scene or in a library found through the library paths, such as "
                                 "cie_d65, cie_a or cie_f11"),
                        real("scale", 1.0).pure().range(0.0, 1.0e15).doc("Factor on all values")}});
    catalogue.addLinked("spectrum");
}

}  // namespace nemra::node
