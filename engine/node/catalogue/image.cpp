#include "engine/node/catalogue/families.h"

namespace nemra::node {

namespace {

/// What the numbers of a picture mean.
Parameter colorSpaceOfPixels() {
    return choice("color_space")
        .option("auto", "What the file says; sRGB for 8-bit and linear sRGB for floating-point pixels if it says nothing")
        .option("srgb", "IEC 61966-2-1, encoded")
        .option("linear_srgb", "Primaries of sRGB, proportional to light")
        .option("rec2020", "ITU-R BT.2020, encoded")
        .option("linear_rec2020", "Primaries of ITU-R BT.2020, proportional to light")
        .option("xyz", "CIE 1931 XYZ, proportional to light")
        .option("data", "No colours: numbers that stand for themselves, such as heights or normals")
        .doc("Colour space of the pixels");
}

Parameter scale() { return real("scale", 1.0).pure().range(0.0, 1.0e15).doc("Factor on the decoded, linear values"); }

}  // namespace

void addImageClasses(Catalogue& catalogue) {
    catalogue.add({.family = "image",
                   .type = "file",
                   .summary = "Picture read from a file: PNG, JPEG, OpenEXR (also spectral) or Radiance HDR",
                   .parameters = {file("path").doc("File name, looked for in the scene's search paths"), colorSpaceOfPixels(),
                                  scale(), text("layer").doc("Layer of a file with several layers; empty takes the first"),
                                  boolean("flip_vertically", false).doc("The file's first row is the bottom of the picture")}});
    catalogue.add(
        {.family = "image",
         .type = "inline",
         .summary = "Picture whose pixels are numbers in the node",
         .parameters = {integer("width", 1).unit("pixels").range(1, 65536).doc("Pixels in a row"),
                        integer("height", 1).unit("pixels").range(1, 65536).doc("Rows of pixels"),
                        integer("channels", 3)
                            .unit("channels")
                            .range(1, 4096)
                            .doc("Numbers per pixel: 1 for grey, 3 for a colour, one for each wavelength of a spectral picture"),
                        choice("color_space")
                            .option("linear_srgb", "Primaries of sRGB, proportional to light")
                            .option("srgb", "IEC 61966-2-1, encoded")
                            .option("rec2020", "ITU-R BT.2020, encoded")
                            .option("linear_rec2020", "Primaries of ITU-R BT.2020, proportional to light")
                            .option("xyz", "CIE 1931 XYZ, proportional to light")
                            .option("spectral", "One channel for each row of the table of wavelengths")
                            .option("data", "No colours: numbers that stand for themselves, such as heights or normals")
                            .doc("What the channels mean"),
                        table("wavelengths")
                            .column(wavelength("wavelength", 550.0).doc("Wavelength of the channel"))
                            .doc("Wavelengths of the channels of a spectral picture, in their order"),
                        scale()},
         .rawSlots = {{"pixels", NEMRA_RAW_DATA_FLOAT, "",
                       "Width x height x channels numbers: rows from the top, pixels from the left, channels innermost"}}});
    catalogue.add({.family = "image",
                   .type = "embedded",
                   .summary = "Picture file kept inside the node: PNG, JPEG, OpenEXR or Radiance HDR, recognised by its bytes",
                   .parameters = {colorSpaceOfPixels(), scale(),
                                  text("layer").doc("Layer of a file with several layers; empty takes the first"),
                                  boolean("flip_vertically", false).doc("The file's first row is the bottom of the picture")},
                   .rawSlots = {{"data", NEMRA_RAW_DATA_BINARY, "", "Bytes of the whole file"}}});
    catalogue.addLinked("image");
}

}  // namespace nemra::node
