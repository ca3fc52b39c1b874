#include "engine/node/catalogue/filter_parts.h"

namespace nemra::node {

namespace {

Parameter observer() {
    return choice("observer")
        .option("cie1931_2deg", "CIE 1931 standard colorimetric observer, 2 degrees")
        .option("cie1964_10deg", "CIE 1964 standard colorimetric observer, 10 degrees")
        .doc("Colour matching functions");
}

}  // namespace

void addResponseFilters(Catalogue& catalogue) {
    catalogue.add({.family = "filter",
                   .type = "spectoxyz",
                   .summary = "From the sensor's channels to CIE tristimulus values",
                   .parameters = {observer()}});
    catalogue.add(
        {.family = "filter",
         .type = "spectocustom",
         .summary =
             "From spectral channels to one channel for each spectrum of its list, which is its response and names it; a picture "
             "takes the first three as X, Y, Z, or the first one as a grey",
         .parameters = {choice("normalization")
                            .option("none", "Responses as they are given")
                            .option("peak", "Each response scaled to a largest value of 1")
                            .option("area", "Each response scaled to an integral of 1 nm")
                            .doc("Scale of the responses"),
                        real("efficacy", 1.0)
                            .unit("lm/W")
                            .range(1.0e-6, 1.0e6)
                            .doc("Factor on the integral of response times radiance; 683 for photopic, 1700 for scotopic, 1 for "
                                 "radiometric quantities")},
         .listClass = "spectrum"});
    catalogue.add(
        {.family = "filter",
         .type = "spectraltohv",
         .summary =
             "From spectral channels to what human vision needs: tristimulus values and the scotopic luminance of the rods "
             "(CIE 1951)",
         .parameters = {observer(), choice("ocular_lens")
                                        .option("standard", "Lens of the standard observers")
                                        .option("aged", "Lens that yellows with age (CIE 203:2012)",
                                                {real("age", 65.0).unit("years").range(1.0, 100.0).doc("Age of the observer")})
                                        .doc("Transmittance of the eye's lens")}});
    catalogue.add(
        {.family = "filter",
         .type = "illuminance",
         .summary = "From luminances to illuminances in lux, for pictures of diffuse surfaces; irradiances become illuminances",
         .parameters = {
             real("reflectance", 0.5)
                 .pure()
                 .range(1.0e-4, 1.0)
                 .doc("Luminous reflectance of the surfaces in a picture of luminances: E = pi L / reflectance (Lambert "
                      "1760)")}});
}

}  // namespace nemra::node
