#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

/// How a picture becomes a spectral factor.
std::vector<ParameterSpec> colors() {
    return {choice("upsampling")
                .option("spectrum", "A smooth spectrum for each colour, by the basis of Mallett and Yuksel (2019)")
                .option("luminance", "The relative luminance alone, at all wavelengths")
                .doc("How a pixel's colour becomes a factor at each wavelength"),
            real("gain", 1.0).pure().range(0.0, 1.0e6).doc("Factor on the picture; results are cut at 1")};
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
                   .summary = "Picture that lies on the surface",
                   .parameters = joined(pictureMapping(), colors()),
                   .children = {child("image", "image", "file", "The picture")}});
    catalogue.add(
        {.family = "filtershader",
         .type = "image",
         .summary = "Picture cast onto the surface from a place of the scene, as by a slide projector",
         .parameters = joined(
             {vector("position", 0.0, 0.0, 0.0).unit("m").range(-1.0e9, 1.0e9).doc("Place of the projector"),
              vector("target", 0.0, 0.0, 1.0).unit("m").range(-1.0e9, 1.0e9).doc("Point that the middle of the picture falls on"),
              direction("up", 0.0, 1.0, 0.0).doc("Direction that is up in the picture"),
              choice("projection")
                  .option("perspective", "The picture grows with the distance",
                          {real("horizontal_fov", 30.0)
                               .unit("deg")
                               .range(0.001, 179.0)
                               .doc("Angle from the left to the right edge of the picture")})
                  .option("parallel", "The picture has the same size at every distance",
                          {real("view_width", 1.0).unit("m").range(1.0e-9, 1.0e9).doc("Width of the picture")})
                  .doc("How the picture is cast; its pixels are square"),
              choice("outside")
                  .option("black", "Nothing passes")
                  .option("clear", "Everything passes")
                  .option("repeat", "The picture again")
                  .doc("What lies beyond the picture")},
             colors()),
         .children = {child("image", "image", "file", "The picture")}});
    catalogue.add({.family = "filtershader",
                   .type = "envmapground",
                   .summary = "Ground of an environment map: each point has the colour that the map shows in its direction",
                   .parameters = joined(
                       {vector("center", 0.0, 0.0, 0.0)
                            .unit("m")
                            .range(-1.0e9, 1.0e9)
                            .doc("Point of the ground below the place where the map was taken"),
                        real("height", 1.6).unit("m").range(1.0e-6, 1.0e6).doc("Height of that place above the ground"),
                        direction("up", 0.0, 1.0, 0.0).doc("Direction that is up in the map"),
                        direction("north", 0.0, 0.0, 1.0).doc("Direction that the middle of the map shows"),
                        choice("mapping")
                            .option("equirectangular", "Longitude from left to right, latitude from bottom to top")
                            .option("angular", "Circle of the full sphere, radius proportional to the angle (Debevec 1998)")
                            .option("mirror_ball", "Photograph of a mirroring ball from far away")
                            .doc("How directions lie in the picture")},
                       colors()),
                   .children = {child("image", "image", "file", "The environment map")}});
    catalogue.addLinked("filtershader");
}

}  // namespace nemra::node
