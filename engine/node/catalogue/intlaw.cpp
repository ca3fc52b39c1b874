#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/intlaw_parts.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

NodeClass fresnelClass() {
    return {.family = "intlaw",
            .type = "fresnel",
            .summary = "Smooth interface between two dielectrics (Fresnel 1823)",
            .parameters = {indexSource()},
            .children = {glassChild("ior", "Index of the inside over that of the outside, if it is the source")}};
}

NodeClass cfresnelClass() {
    return {.family = "intlaw",
            .type = "cfresnel",
            .summary = "Smooth surface of a metal or another absorbing body with a complex index (Born and Wolf 1999)",
            .children = {child("complex_ior", "dielectricfunc", "nk", "Complex index of the body",
                               {{"source", word("preset")}, {"preset", word("Al_rakic")}}),
                         spectrumChild("outer_ior", 1.0, "Refractive index on the side from which light comes")}};
}

NodeClass simpleClass() {
    return {.family = "intlaw",
            .type = "simple",
            .summary = "Reflectance and transmittance that don't depend on the angle; what is missing to 1 is absorbed",
            .parameters = {transmittedDirection()},
            .children = {spectrumChild("reflectance", 0.04, "Share that is reflected, 0 to 1"),
                         spectrumChild("transmittance", 0.96, "Share that is transmitted, 0 to 1"),
                         glassChild("ior", "Index of the inside over that of the outside, which bends the transmitted light")}};
}

NodeClass artisticClass() {
    return {.family = "intlaw",
            .type = "artistic",
            .summary = "Reflectance between a value at normal and one at grazing incidence (after Schlick 1994)",
            .parameters = {real("falloff_exponent", 5.0)
                               .pure()
                               .range(0.01, 100.0)
                               .doc("Power of 1 - cos(angle) with which the grazing reflectance sets in"),
                           transmittedDirection()},
            .children = {spectrumChild("normal_reflectance", 0.04, "Reflectance at normal incidence, 0 to 1"),
                         spectrumChild("grazing_reflectance", 1.0, "Reflectance at grazing incidence, 0 to 1"),
                         spectrumChild("transmittance", 1.0, "Share of what isn't reflected that is transmitted, 0 to 1"),
                         glassChild("ior", "Index of the inside over that of the outside, which bends the transmitted light")}};
}

NodeClass thinfilmClass() {
    return {
        .family = "intlaw",
        .type = "thinfilm",
        .summary = "Stack of thin films that interfere (Abeles 1950; Macleod 2010); the bare interface without films",
        .parameters = {table("films")
                           .column(real("thickness", 100.0).unit("nm").range(0.0, 1.0e6).doc("Thickness of the film"))
                           .doc("One row for each material in the list, from the outside to the inside"),
                       choice("substrate_source")
                           .option("substrate", "The child substrate")
                           .option("media", "The medium on the inside of the surface")
                           .doc("What the films lie on")},
        .children = {child("substrate", "dielectricfunc", "nk", "Complex index of what the films lie on",
                           {{"source", word("spectra")}}),
                     spectrumChild("outer_ior", 1.0, "Refractive index outside, if the substrate is not taken from the media")},
        .listClass = "dielectricfunc"};
}

NodeClass polarizerClass() {
    return {
        .family = "intlaw",
        .type = "polarizer",
        .summary = "Thin polariser or retarder that light crosses without bending (Mueller calculus: Goldstein 2011)",
        .parameters = {choice("element")
                           .option("linear", "Linear polariser")
                           .option("circular", "Circular polariser",
                                   {choice("handedness")
                                        .option("right", "Passes right-handed light: clockwise, seen against the beam")
                                        .option("left", "Passes left-handed light")
                                        .doc("Sense of rotation that passes")})
                           .option("retarder", "Linear retarder",
                                   {real("retardance", 90.0)
                                        .unit("deg")
                                        .range(-3600.0, 3600.0)
                                        .doc("Retardance of the slow axis at the design wavelength"),
                                    wavelength("design_wavelength", 550.0)
                                        .doc("Wavelength of that retardance, which goes as 1 / wavelength")})
                           .doc("What the element does to the polarisation"),
                       polarizationAxis()},
        .children = {spectrumChild("principal_transmittance", 1.0, "Transmittance for light polarised along the axis, 0 to 1"),
                     spectrumChild("minor_transmittance", 0.0,
                                   "Transmittance for light polarised across the axis, 0 to 1; a retarder has only the other"),
                     spectrumChild("reflectance", 0.0, "Share that is reflected at either side, 0 to 1")}};
}

}  // namespace

Parameter indexSource() {
    return choice("index_source")
        .option("ior", "The child ior")
        .option("media", "The media on both sides of the surface, as the material names them")
        .doc("Where the refractive indices come from");
}

Parameter transmittedDirection() {
    return choice("transmitted_direction")
        .option("refracted", "Bent by the law of refraction (Snellius 1621), with the child ior")
        .option("straight", "Straight on, as through a thin sheet")
        .doc("Where transmitted light goes");
}

Parameter polarizationAxis() {
    return choice("axis_reference")
        .option(
            "surface", "Angle on the surface",
            {angle("axis_angle", 0.0, -360.0, 360.0).doc("Angle of the axis from growing u, counter-clockwise from the front")})
        .option("scene", "Direction in the scene",
                {direction("axis_direction", 1.0, 0.0, 0.0).doc("Direction whose projection onto the surface is the axis")})
        .doc("How the axis is given: that of transmission, or the fast axis of a retarder");
}

ChildSpec glassChild(std::string name, std::string doc) {
    return child(std::move(name), "spectrum", "abbenumber", std::move(doc));
}

// Laws of a smooth interface: how much light is reflected and transmitted, how it is polarised, and where it goes.
void addIntlawClasses(Catalogue& catalogue) {
    catalogue.add(fresnelClass());
    catalogue.add(cfresnelClass());
    catalogue.add(simpleClass());
    catalogue.add(artisticClass());
    catalogue.add({.family = "intlaw", .type = "null", .summary = "No interface: all light goes straight on"});
    catalogue.add(thinfilmClass());
    catalogue.add(polarizerClass());
    addFoilLaws(catalogue);
    addTabulatedLaws(catalogue);
    catalogue.addLinked("intlaw");
}

}  // namespace nemra::node
