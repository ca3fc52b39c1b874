#include "engine/node/catalogue/emitter_parts.h"

namespace nemra::node {

namespace {

/// A luminaire's photometric file and how it stands in space; then what only this class has.
std::vector<ParameterSpec> photometry(std::vector<ParameterSpec> own) {
    return joined(
        {
            file("path").doc("File with the luminous intensities; not read if the node carries the file itself"),
            choice("format")
                .option("auto", "Recognised by the contents")
                .option("ies", "ANSI/IES LM-63, 1986 to 2019")
                .option("eulumdat", "EULUMDAT, also called LDT (Stockmar 1990)")
                .doc("Format of the file"),
            choice("level")
                .option("file", "As the file says, in candela")
                .option("luminous_flux", "Scaled to a luminous flux of the luminaire",
                        {emissionLevel("luminous_flux", "lm").doc("Luminous flux of the luminaire")})
                .option("lamp_flux", "Scaled to lamps of another luminous flux",
                        {emissionLevel("lamp_flux", "lm").doc("Luminous flux of all lamps together, in place of the file's")})
                .doc("What fixes the level of the emission"),
            real("dimming", 1.0).pure().range(0.0, 1.0e6).doc("Factor on all intensities; 1 is full output"),
            integer("lamp_set", 1).unit("sets").range(1, 20).doc("Which of the file's lamp sets is installed, counted from 1"),
            boolean("apply_tilt", false).doc("Use the file's tilt factors for a luminaire that doesn't hang as it was measured"),
        },
        std::move(own));
}

std::vector<RawSlotSpec> photometricBytes() {
    return {{"data", NEMRA_RAW_DATA_BINARY, "", "Contents of the photometric file, in place of the one that the path names"}};
}

ChildSpec lampSpectrum() {
    return child("spectrum", "spectrum", "preset", "Spectrum of the lamp; only its shape counts", {{"preset", word("cie_d65")}});
}

void addPhotometricFiles(Catalogue& catalogue) {
    catalogue.add(
        {.family = "emitter",
         .type = "planar_ies",
         .summary =
             "Flat luminous opening with the intensities of a photometric file: the whole surface emits what the file says",
         .parameters = photometry(
             {direction("c0_direction", 1.0, 0.0, 0.0)
                  .doc("Direction of the half-plane C0 (horizontal angle 0) on the opening; only its part in the surface counts"),
              emittingSide()}),
         .children = {lampSpectrum()},
         .rawSlots = photometricBytes()});
    catalogue.add({.family = "emitter",
                   .type = "spherical_ies",
                   .summary = "Luminous body with the intensities of a photometric file, whatever the normals of its surface",
                   .parameters = photometry(
                       {direction("nadir", 0.0, -1.0, 0.0).doc("Direction of the vertical angle 0, straight down when it hangs"),
                        direction("c0_direction", 1.0, 0.0, 0.0)
                            .doc("Direction of the half-plane C0 (horizontal angle 0); only its part across the nadir counts"),
                        choice("frame")
                            .option("object", "The two directions move with the instance")
                            .option("world", "The two directions are those of the world")
                            .doc("Coordinates of the two directions")}),
                   .children = {lampSpectrum()},
                   .rawSlots = photometricBytes()});
}

void addCompositions(Catalogue& catalogue) {
    const auto part = [](const char* name, const char* doc) { return child(name, "emitter", "lambertian", doc); };
    catalogue.add(
        {.family = "emitter", .type = "additive", .summary = "Sum of the emitters of its list", .listClass = "emitter"});
    catalogue.add(
        {.family = "emitter",
         .type = "linearblend",
         .summary = "Weighted mean of two emitters",
         .parameters = {real("weight", 0.5).pure().range(0.0, 1.0).doc("Share of the second emitter; the first has the rest")},
         .children = {part("first", "Emitter that stands alone at weight 0"),
                      part("second", "Emitter that stands alone at weight 1")}});
    catalogue.add({.family = "emitter",
                   .type = "map",
                   .summary = "Another emitter behind a filter that varies over the surface, as a screen or a lit sign",
                   .parameters = {choice("level")
                                      .option("filtered", "The emitter's quantity holds where the filter is 1")
                                      .option("mean", "The emitter's quantity holds for the surface with its filter, on average")
                                      .doc("Where the emitter has the level that it is given")},
                   .children = {part("emitter", "What the surface emits where the filter is 1"),
                                child("filter", "filtershader", "texture", "Factor at each point of the surface")}});
    catalogue.add(
        {.family = "emitter",
         .type = "hemispheremap",
         .summary = "Radiance of each direction from a picture of the hemisphere, as a conoscope measures it",
         .parameters = {choice("projection")
                            .option("equidistant", "Radius proportional to the angle to the normal, 90 degrees at the rim")
                            .option("orthographic", "Radius proportional to the sine of that angle")
                            .option("equisolid", "Equal areas for equal solid angles")
                            .option("latlong", "Azimuth from left to right, angle to the normal from top to bottom")
                            .doc("How directions lie in the picture; the normal is in the middle of a disc"),
                        real("rotation", 0.0)
                            .unit("deg")
                            .range(-360.0, 360.0)
                            .doc("Counterclockwise turn of the picture, seen from outside; at 0 the tangent points right"),
                        choice("color")
                            .option("luminance", "The picture's luminance scales the spectrum")
                            .option("picture",
                                    "The picture's colours become spectra (Mallett and Yuksel 2019), times the spectrum")
                            .doc("What the picture's colours do"),
                        directionalQuantity("where the picture is 1"), emittingSide()},
         .children = {child("image", "image", "file", "Picture of the hemisphere"),
                      child("radiance", "spectrum", "uniform", "Spectral radiance where the picture is 1, or its shape",
                            {{"value", number(1.0)}})}});
}

}  // namespace

void addMeasuredEmitters(Catalogue& catalogue) {
    addPhotometricFiles(catalogue);
    addCompositions(catalogue);
}

}  // namespace nemra::node
