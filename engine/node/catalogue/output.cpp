#include "engine/node/catalogue/families.h"

namespace nemra::node {

void addOutputClasses(Catalogue& catalogue) {
    catalogue.add(
        {.family = "output",
         .type = "rgbimage",
         .summary =
             "Picture for a display: filters in their order, then a colour space. Without filters: spectoxyz, averageautogain",
         .parameters =
             {choice("color_space")
                  .option("srgb", "IEC 61966-2-1")
                  .option("rec2020", "ITU-R BT.2020")
                  .option("xyz", "CIE 1931 XYZ")
                  .doc("Colour space of the picture"),
              real("gamma", 0.0).pure().range(0.0, 10.0).doc("Exponent of the display curve; 0 takes the space's own curve")},
         .listClass = "filter"});
    catalogue.addLinked("output");
}

}  // namespace nemra::node
