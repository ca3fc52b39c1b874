#include "engine/node/catalogue/filter_parts.h"

namespace nemra::node {

namespace {

Parameter placement() {
    return choice("place")
        .option("bottom_right", "Bottom right corner")
        .option("bottom_left", "Bottom left corner")
        .option("top_right", "Top right corner")
        .option("top_left", "Top left corner")
        .option("center", "Middle of the picture")
        .doc("Where it stands");
}

void addSmoothing(Catalogue& catalogue) {
    catalogue.add({.family = "filter",
                   .type = "gaussianblur",
                   .summary = "Convolution with a Gaussian",
                   .parameters = {real("sigma", 2.0).unit("pixels").range(0.0, 10000.0).doc("Standard deviation")}});
    catalogue.add(
        {.family = "filter",
         .type = "noisekiller",
         .summary =
             "Removes noise and keeps edges: non-local means guided by the variance of the pixels (Rousselle, Knaus and Zwicker "
             "2012)",
         .parameters = {
             real("strength", 0.45).pure().range(0.0, 10.0).doc("Factor k on the variances in the distance of patches"),
             integer("search_radius", 7).unit("pixels").range(1, 64).doc("Half the side of the window that is searched"),
             integer("patch_radius", 3).unit("pixels").range(0, 16).doc("Half the side of the patches that are compared"),
             choice("outliers")
                 .option("limit", "Single pixels far brighter than their neighbours are cut first",
                         {real("outlier_factor", 10.0)
                              .pure()
                              .range(1.0, 1.0e6)
                              .doc("Most that a pixel may exceed the third brightest of its eight neighbours; light is lost")})
                 .option("keep", "No pixel is cut")
                 .doc("What happens to single bright pixels")}});
    catalogue.add(
        {.family = "filter",
         .type = "glare",
         .summary = "Veil of light that the eye scatters about bright spots (Vos and van den Berg 1999, CIE 135/1)",
         .parameters = {choice("observer_state")
                            .option("photopic", "Eye in daylight")
                            .option("mesopic", "Eye at dusk, with a wider pupil (Spencer, Shirley, Zimmerman and Greenberg 1995)")
                            .option("scotopic", "Eye at night (Spencer, Shirley, Zimmerman and Greenberg 1995)")
                            .doc("State of the eye"),
                        real("age", 30.0).unit("years").range(1.0, 100.0).doc("Age of the observer"),
                        real("pigmentation", 0.5)
                            .pure()
                            .range(0.0, 1.2)
                            .doc("Colour of the eye: 0 black, 0.5 brown, 1.0 light, 1.2 very light blue"),
                        choice("pixel_size")
                            .option("instrument", "Angles of the pixels are those of the instrument")
                            .option("viewing", "The picture is looked at on a display",
                                    {real("pixels_per_degree", 40.0)
                                         .unit("1/deg")
                                         .range(1.0e-3, 1.0e5)
                                         .doc("Pixels in a degree of the visual field")})
                            .doc("How large a pixel is for the eye"),
                        real("strength", 1.0).pure().range(0.0, 1.0).doc("Share of the scattered light that is shown")}});
}

void addGeometryFilters(Catalogue& catalogue) {
    catalogue.add({.family = "filter",
                   .type = "resize",
                   .summary = "Picture of another size",
                   .parameters = {choice("size")
                                      .option("factor", "Given as a factor",
                                              {real("factor", 0.5).pure().range(1.0e-3, 100.0).doc("Factor on width and height")})
                                      .option("pixels", "Given in pixels",
                                              {integer("width", 640).unit("pixels").range(1, 65536).doc("New width"),
                                               integer("height", 480).unit("pixels").range(1, 65536).doc("New height")})
                                      .doc("What says the new size"),
                                  choice("kernel")
                                      .option("box", "Mean over the area of the new pixel")
                                      .option("bilinear", "Straight lines between pixels")
                                      .option("mitchell", "Cubic with little ringing (Mitchell and Netravali 1988)")
                                      .option("lanczos", "Windowed sinc over three pixels (Duchon 1979)")
                                      .doc("How old pixels weigh in a new one")}});
    catalogue.add(
        {.family = "filter",
         .type = "sphereresolutionfix",
         .summary =
             "Evens out the resolution of pictures of the whole sphere: near the poles it averages along the parallels over the "
             "angle that a pixel has at the equator",
         .parameters = {real("minimum_latitude", 0.0)
                            .unit("deg")
                            .range(0.0, 90.0)
                            .doc("Distance from the equator at which it begins; 0 treats the whole picture")}});
}

void addOverlays(Catalogue& catalogue) {
    catalogue.add(
        {.family = "filter",
         .type = "watermark",
         .summary = "Text or picture laid over the picture (operator over of Porter and Duff 1984)",
         .parameters = {choice("content").option("text", "A text").option("image", "A picture").doc("What is laid over"),
                        placement(),
                        real("size", 4.0)
                            .unit("%")
                            .range(0.1, 100.0)
                            .doc("Height of a line of text or of the image, in heights of the "
                                 "picture"),
                        real("margin", 1.0).unit("%").range(0.0, 50.0).doc("Distance from the edges, in heights of the picture"),
                        color("color", "srgb", 1.0F, 1.0F, 1.0F).doc("Colour of the text"),
                        real("opacity", 0.7).pure().range(0.0, 1.0).doc("0 is invisible, 1 hides the picture")},
         .children = {child("text", "text", "default", "The text"), child("image", "image", "file", "The picture")}});
    catalogue.add(
        {.family = "filter",
         .type = "merge",
         .summary = "Combines the picture with another one of the same size, pixel by pixel, before tone curves",
         .parameters = {choice("operation")
                            .option("blend", "Weighted mean",
                                    {real("weight", 0.5).pure().range(0.0, 1.0).doc("Share of the other picture")})
                            .option("add", "Sum",
                                    {real("factor", 1.0).pure().range(-1.0e6, 1.0e6).doc("Factor on the other picture")})
                            .option("multiply", "Product")
                            .option("difference", "Magnitude of the difference")
                            .option("maximum", "The brighter pixel")
                            .doc("How the two are combined")},
         .children = {child("image", "image", "file", "The other picture; its values are luminances in cd/m2")}});
}

}  // namespace

void addPictureFilters(Catalogue& catalogue) {
    addSmoothing(catalogue);
    addGeometryFilters(catalogue);
    addOverlays(catalogue);
}

}  // namespace nemra::node
