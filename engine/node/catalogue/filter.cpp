#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addFilterClasses(Catalogue& catalogue) {
    catalogue.add({.family = "filter",
                   .type = "spectoxyz",
                   .summary = "From the sensor's channels to CIE tristimulus values",
                   .parameters = {choice("observer")
                                      .option("cie1931_2deg", "CIE 1931 standard colorimetric observer, 2 degrees")
                                      .option("cie1964_10deg", "CIE 1964 standard colorimetric observer, 10 degrees")
                                      .doc("Colour matching functions")}});
    catalogue.add(
        {.family = "filter",
         .type = "gain",
         .summary = "Fixed factor from luminance to display value",
         .parameters = {
             real("gain", 1.0).unit("1/(cd/m2)").range(0.0, 1.0e15).doc("Display value of a luminance of 1 cd/m2; white is 1")}});
    catalogue.add({.family = "filter",
                   .type = "averageautogain",
                   .summary = "Factor that brings the mean luminance of the picture to a given display value",
                   .parameters = {real("target", 0.18).pure().range(1.0e-6, 1.0).doc("Mean display luminance; white is 1")}});
    catalogue.addLinked("filter");
}

}  // namespace nemra::node
