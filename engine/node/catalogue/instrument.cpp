#include "engine/node/catalogue/families.h"

namespace nemra::node {

namespace {

/// Where a camera stands, what it looks at, and its pixels; then what only this camera has.
std::vector<ParameterSpec> camera(std::vector<ParameterSpec> own) {
    std::vector<ParameterSpec> parameters = {
        vector("position", 0.0, 0.0, 0.0).unit("m").range(-1.0e9, 1.0e9).doc("Place of the camera"),
        vector("target", 0.0, 0.0, 1.0).unit("m").range(-1.0e9, 1.0e9).doc("Point that it looks at"),
        direction("up", 0.0, 1.0, 0.0).doc("Direction that is up in the image"),
        integer("width", 640).unit("pixels").range(1, 65536).doc("Pixels in a row"),
        integer("height", 480).unit("pixels").range(1, 65536).doc("Rows of pixels"),
        real("exposure_time", 0.01).unit("s").range(1.0e-9, 1.0e9).doc("Exposure time"),
    };
    parameters.insert(parameters.end(), std::make_move_iterator(own.begin()), std::make_move_iterator(own.end()));
    return parameters;
}

std::vector<ChildSpec> sensorChild() { return {child("sensor", "sensor", "ciexyz", "What its pixels are sensitive to")}; }

}  // namespace

void addInstrumentClasses(Catalogue& catalogue) {
    catalogue.add(
        {.family = "instrument",
         .type = "stdcam",
         .summary = "Camera with a film, as a photographer describes it",
         .parameters = camera(
             {real("focal_length", 50.0).unit("mm").range(0.01, 1.0e6).doc("Focal length; distance of the film behind a pinhole"),
              real("film_width", 36.0).unit("mm").range(1.0e-3, 1.0e6).doc("Width of the film"),
              real("film_height", 24.0).unit("mm").range(1.0e-3, 1.0e6).doc("Height of the film"),
              choice("aperture")
                  .option("pinhole", "Everything is sharp; results are scene radiances")
                  .option("lens", "Thin aplanatic lens with a depth of field",
                          {real("f_number", 2.8).pure().range(0.1, 1000.0).doc("Focal length over the diameter of the aperture"),
                           real("focus_distance", 2.0).unit("m").range(1.0e-3, 1.0e9).doc("Distance that is sharp")})
                  .doc("How light enters the camera")}),
         .children = sensorChild(),
         .listClass = "output"});
    catalogue.add({.family = "instrument",
                   .type = "idealrectcam",
                   .summary = "Ideal perspective camera with square pixels; everything is sharp",
                   .parameters = camera({real("horizontal_fov", 60.0)
                                             .unit("deg")
                                             .range(0.001, 179.0)
                                             .doc("Angle from the left to the right edge of the image")}),
                   .children = sensorChild(),
                   .listClass = "output"});
    catalogue.addLinked("instrument");
}

}  // namespace nemra::node
