#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

constexpr const char* kTangentFrame =
    "In the frame of the surface: x along growing u, y along growing v, z along the normal of the geometry";

NodeClass normalmapClass() {
    return {.family = "normalshader",
            .type = "normalmap",
            .summary = "Normals read from a picture on the surface",
            .parameters = joined(
                {choice("encoding")
                     .option("unsigned", "A pixel of 0 to 1 means a component of -1 to 1")
                     .option("signed", "The pixel is the component itself")
                     .doc("How the picture holds the components of the normal"),
                 choice("frame")
                     .option("tangent", kTangentFrame)
                     .option("object", "In the frame of the geometry")
                     .option("world", "In the frame of the scene")
                     .doc("Frame of the normals"),
                 choice("green")
                     .option("up", "The green channel is the component along growing v")
                     .option("down", "The green channel is the component against growing v")
                     .doc("Sign of the second component"),
                 real("strength", 1.0).pure().range(0.0, 100.0).doc("Factor on the slopes; 0 leaves the normal of the geometry")},
                pictureMapping()),
            .children = {child("image", "image", "file", "The picture, its numbers taken without a tone curve")}};
}

NodeClass heightmapClass() {
    return {.family = "normalshader",
            .type = "heightmap",
            .summary = "Normals of a measured relief, given as a picture of heights in metres",
            .parameters = joined(
                {real("black_height", 0.0).unit("m").range(-1.0e3, 1.0e3).doc("Height where the picture is 0"),
                 real("white_height", 1.0e-4).unit("m").range(-1.0e3, 1.0e3).doc("Height where the picture is 1"),
                 choice("lateral_scale")
                     .option("surface", "The size of the picture on the surface follows from u and v")
                     .option("pixel_pitch", "The pixels have a size of their own, as a profilometer gives it",
                             {real("pixel_width", 1.0e-5).unit("m").range(1.0e-9, 1.0e3).doc("Distance of pixels in a row"),
                              real("pixel_height", 1.0e-5).unit("m").range(1.0e-9, 1.0e3).doc("Distance of rows")})
                     .doc("What the slopes refer to")},
                pictureMapping()),
            .children = {child("image", "image", "file", "The heights, taken without a tone curve")}};
}

}  // namespace

void addNormalshaderClasses(Catalogue& catalogue) {
    catalogue.add({.family = "normalshader",
                   .type = "uniform",
                   .summary = "Leaves the normal of the geometry as it is, or tilts it alike everywhere",
                   .parameters = {direction("normal", 0.0, 0.0, 1.0).doc(kTangentFrame)}});
    catalogue.add(normalmapClass());
    catalogue.add(heightmapClass());
    catalogue.add(
        {.family = "normalshader",
         .type = "bumpmap",
         .summary = "Normals of a surface that is displaced by a small height (Blinn 1978)",
         .parameters = {real("strength", 1.0e-3)
                            .unit("m")
                            .range(-1.0e3, 1.0e3)
                            .doc("Height where the shader is 1; against the normal if negative"),
                        real("step", 1.0e-3).pure().range(1.0e-9, 1.0).doc("Step in u and v over which the slope is taken")},
         .children = {scalarChild("height", 0.0, "Height over the surface, in units of the strength")}});
    catalogue.add({.family = "normalshader",
                   .type = "blend",
                   .summary = "Normal between those of two shaders",
                   .children = {child("first", "normalshader", "uniform", "Normal where the weight is 0"),
                                child("second", "normalshader", "uniform", "Normal where the weight is 1"),
                                scalarChild("weight", 0.5, "Share of the second, 0 to 1")}});
    catalogue.add({.family = "normalshader",
                   .type = "switch",
                   .summary = "One of several normal shaders; the normal of the geometry if none is selected",
                   .parameters = {listSelection()},
                   .listClass = "normalshader"});
    catalogue.addLinked("normalshader");
}

}  // namespace nemra::node
