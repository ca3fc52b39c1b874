#include "engine/node/catalogue/families.h"

namespace nemra::node {

namespace {

Parameter interpolation() {
    return choice("interpolation")
        .option("bilinear", "Straight lines between the middles of the pixels")
        .option("nearest", "Value of the nearest pixel")
        .option("bicubic", "Smooth curve through the pixels (Catmull and Rom 1974)")
        .doc("What lies between the middles of two pixels");
}

Parameter wrap(std::string name, const char* axis) {
    return choice(std::move(name))
        .option("repeat", "The picture again")
        .option("mirror", "The picture again, every second one mirrored")
        .option("clamp", "The pixels at the edge")
        .option("black", "Nothing passes")
        .doc(std::string("What lies beyond the picture along ") + axis);
}

/// How a picture becomes a spectral factor.
Parameter upsampling() {
    return choice("upsampling")
        .option("spectrum", "A smooth spectrum for each colour, by the basis of Mallett and Yuksel (2019)")
        .option("luminance", "The relative luminance alone, at all wavelengths")
        .doc("How a pixel's colour becomes a factor at each wavelength");
}

}  // namespace

// A factor between 0 and 1 at each wavelength, for what a surface or a direction lets pass, reflects or emits.
void addFiltershaderClasses(Catalogue& catalogue) {
    catalogue.add(
        {.family = "filtershader",
         .type = "uniform",
         .summary = "The same spectral filter everywhere",
         .children = {child("filter", "spectrum", "uniform", "Factor at each wavelength, 0 to 1", {{"value", number(1.0)}})}});
    catalogue.add({.family = "filtershader",
                   .type = "constant",
                   .summary = "The same neutral filter everywhere: one factor at all wavelengths",
                   .parameters = {real("factor", 1.0).pure().range(0.0, 1.0).doc("Share of the light that passes")}});
    catalogue.add({.family = "filtershader",
                   .type = "texture",
                   .summary = "Picture over the texture coordinates of the surface, repeated and turned at will",
                   .parameters = {real("scale_u", 1.0).pure().range(-1.0e6, 1.0e6).doc("Pictures in a unit of the coordinate u"),
                                  real("scale_v", 1.0).pure().range(-1.0e6, 1.0e6).doc("Pictures in a unit of the coordinate v"),
                                  real("offset_u", 0.0).pure().range(-1.0e6, 1.0e6).doc("Shift along u, in pictures"),
                                  real("offset_v", 0.0).pure().range(-1.0e6, 1.0e6).doc("Shift along v, in pictures"),
                                  real("rotation", 0.0)
                                      .unit("deg")
                                      .range(-360.0, 360.0)
                                      .doc("Counterclockwise turn of the picture about its origin, before the shift"),
                                  wrap("wrap_u", "u"), wrap("wrap_v", "v"), interpolation(), upsampling(),
                                  real("gain", 1.0).pure().range(0.0, 1.0e6).doc("Factor on the picture; results are cut at 1")},
                   .children = {child("image", "image", "file", "The picture, with u to the right and v up")}});
    catalogue.add(
        {.family = "filtershader",
         .type = "image",
         .summary = "Picture of a given size laid onto the surface by parallel projection, as a slide or a printed sheet",
         .parameters =
             {vector("center", 0.0, 0.0, 0.0).unit("m").range(-1.0e9, 1.0e9).doc("Where the middle of the picture lies"),
              direction("axis", 0.0, 0.0, 1.0).doc("Direction along which the picture is projected"),
              direction("up", 0.0, 1.0, 0.0).doc("Direction that is up in the picture"),
              real("width", 1.0).unit("m").range(1.0e-9, 1.0e9).doc("Width of the picture"),
              real("height", 1.0).unit("m").range(1.0e-9, 1.0e9).doc("Height of the picture"),
              choice("frame")
                  .option("object", "Place and directions move with the instance")
                  .option("world", "Place and directions are those of the world")
                  .doc("Coordinates in which the picture is laid"),
              choice("outside")
                  .option("black", "Nothing passes")
                  .option("clear", "Everything passes")
                  .option("repeat", "The picture again")
                  .doc("What lies beyond the picture"),
              interpolation(), upsampling(),
              real("gain", 1.0).pure().range(0.0, 1.0e6).doc("Factor on the picture; results are cut at 1")},
         .children = {child("image", "image", "file", "The picture")}});
    catalogue.add(
        {.family = "filtershader",
         .type = "envmapground",
         .summary = "Ground of an environment map: each point has the colour that the map shows in its direction",
         .parameters = {vector("center", 0.0, 0.0, 0.0)
                            .unit("m")
                            .range(-1.0e9, 1.0e9)
                            .doc("Point of the ground below the place where the map was taken"),
                        real("height", 1.6).unit("m").range(1.0e-6, 1.0e6).doc("Height of that place above the ground"),
                        direction("up", 0.0, 1.0, 0.0).doc("Direction that is up in the map"),
                        direction("north", 0.0, 0.0, 1.0).doc("Direction that the middle of the map shows"),
                        choice("mapping")
                            .option("equirectangular", "Longitude from left to right, latitude from top to bottom")
                            .option("angular", "Circle of the full sphere, radius proportional to the angle (Debevec 1998)")
                            .option("mirror_ball", "Photograph of a mirroring ball from far away")
                            .doc("How directions lie in the picture"),
                        interpolation(), upsampling(),
                        real("gain", 1.0).pure().range(0.0, 1.0e6).doc("Factor on the picture; results are cut at 1")},
         .children = {child("image", "image", "file", "The environment map")}});
    catalogue.addLinked("filtershader");
}

}  // namespace nemra::node
