#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addSensorClasses(Catalogue& catalogue) {
    catalogue.add({.family = "sensor",
                   .type = "ciexyz",
                   .summary = "Channels X, Y, Z of a CIE standard observer; Y is the luminance in cd/m2",
                   .parameters = {choice("observer")
                                      .option("cie1931_2deg", "CIE 1931 standard colorimetric observer, 2 degrees")
                                      .option("cie1964_10deg", "CIE 1964 standard colorimetric observer, 10 degrees")
                                      .doc("Colour matching functions")}});
    catalogue.add({.family = "sensor",
                   .type = "spectralbox",
                   .summary = "Adjoining spectral boxes of equal width; each channel is the mean over its box, W/(m2 sr nm)",
                   .parameters = {wavelength("first", 380.0).doc("Centre of the first box"),
                                  wavelength("last", 780.0).doc("Centre of the last box"),
                                  integer("count", 41).unit("boxes").range(1, 10000).doc("Number of boxes")}});
    catalogue.add({.family = "sensor",
                   .type = "energy",
                   .summary = "One channel E: radiance summed over a band, W/(m2 sr)",
                   .parameters = {wavelength("minimum", 360.0).doc("Lower end of the band"),
                                  wavelength("maximum", 830.0).doc("Upper end of the band")}});
    catalogue.add(
        {.family = "sensor",
         .type = "custom",
         .summary = "One channel for each spectrum of its list, which is the channel's response and gives it its name",
         .parameters = {choice("response")
                            .option("energy", "Radiometric: the integral of response times spectral radiance, W/(m2 sr)")
                            .option("luminous", "Photometric: that integral times an efficacy",
                                    {real("efficacy", 683.0)
                                         .unit("lm/W")
                                         .range(1.0e-6, 1.0e6)
                                         .doc("Luminous efficacy at response 1; 683 for photopic, 1700 for scotopic quantities")})
                            .doc("What the channels measure"),
                        choice("normalization")
                            .option("none", "Responses as they are given")
                            .option("peak", "Each response scaled to a largest value of 1")
                            .option("area", "Each response scaled to an integral of 1 nm: channels hold mean spectral radiances")
                            .doc("Scale of the responses"),
                        wavelength("minimum", 360.0).doc("Lower end of the band in which the responses count"),
                        wavelength("maximum", 830.0).doc("Upper end of that band")},
         .listClass = "spectrum"});
    catalogue.addLinked("sensor");
}

}  // namespace nemra::node
