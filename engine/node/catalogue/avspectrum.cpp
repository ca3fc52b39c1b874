#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

// Spectra that vary with the angle of incidence: reflectances and transmittances of coatings and foils.
void addAvspectrumClasses(Catalogue& catalogue) {
    catalogue.add(
        {.family = "avspectrum",
         .type = "table",
         .summary = "Values by wavelength and angle",
         .parameters = {table("samples")
                            .column(wavelength("wavelength", 550.0).doc("Wavelength; left out: holds at every wavelength"))
                            .column(angle("angle", 0.0, 0.0, 90.0).doc("Angle from the normal; left out: holds at every angle"))
                            .column(real("value", 0.0)
                                        .pure()
                                        .range(-1.0e15, 1.0e15)
                                        .doc("Value, in the unit of the spectrum's use: 1 for a reflectance"))
                            .doc("The samples, in any order, on a full grid of wavelengths and angles"),
                        real("default_value", 0.0).pure().range(0.0, 1.0e15).doc("Value while there are no samples"),
                        tableInterpolation(), real("scale", 1.0).pure().range(0.0, 1.0e15).doc("Factor on all values")}});
    catalogue.addLinked("avspectrum");
}

}  // namespace nemra::node
