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
    catalogue.addLinked("sensor");
}

}  // namespace nemra::node
