#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/instrument_parts.h"

namespace nemra::node {

Parameters camera(Parameters own) {
    return joined(
        {
            vector("position", 0.0, 0.0, 0.0).unit("m").range(-1.0e9, 1.0e9).doc("Place of the camera"),
            vector("target", 0.0, 0.0, 1.0).unit("m").range(-1.0e9, 1.0e9).doc("Point that it looks at"),
            direction("up", 0.0, 1.0, 0.0).doc("Direction that is up in the image"),
            integer("width", 640).unit("pixels").range(1, 65536).doc("Pixels in a row"),
            integer("height", 480).unit("pixels").range(1, 65536).doc("Rows of pixels"),
            real("exposure_time", 0.01).unit("s").range(1.0e-9, 1.0e9).doc("Exposure time"),
        },
        std::move(own));
}

Parameters pixels(std::int32_t width, std::int32_t height) {
    return {integer("width", width).unit("pixels").range(1, 65536).doc("Pixels in a row"),
            integer("height", height).unit("pixels").range(1, 65536).doc("Rows of pixels")};
}

Parameter horizontalFov() {
    return real("horizontal_fov", 60.0).unit("deg").range(0.001, 179.0).doc("Angle from the left to the right edge of the image");
}

Parameter viewWidth() {
    return real("view_width", 1.0)
        .unit("m")
        .range(1.0e-9, 1.0e9)
        .doc("Width of what the image shows; pixels are square, so the height follows");
}

Parameters sphereView() {
    return {choice("projection")
                .option("equirectangular", "Longitude from left to right, latitude from bottom to top")
                .option("equal_area", "Longitude and sine of the latitude: all pixels have the same solid angle (Lambert 1772)")
                .doc("How directions lie in the image; the target is in the middle"),
            real("longitude_range", 360.0).unit("deg").range(0.001, 360.0).doc("Angle from the left to the right edge"),
            real("latitude_range", 180.0).unit("deg").range(0.001, 180.0).doc("Angle from the bottom to the top edge")};
}

std::vector<ChildSpec> sensorChild() { return {child("sensor", "sensor", "ciexyz", "What its pixels are sensitive to")}; }

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
                   .parameters = camera({horizontalFov()}),
                   .children = sensorChild(),
                   .listClass = "output"});
    catalogue.add(
        {.family = "instrument",
         .type = "realrectcam",
         .summary = "Camera as an optical engineer describes it: sensor with its pixel pitch, aplanatic lens, stop, distortion",
         .parameters = camera(
             {real("pixel_pitch_x", 6.0).unit("um").range(1.0e-3, 1.0e6).doc("Distance of the middles of two pixels in a row"),
              real("pixel_pitch_y", 6.0).unit("um").range(1.0e-3, 1.0e6).doc("Distance of two rows"),
              real("focal_length", 16.0).unit("mm").range(0.01, 1.0e6).doc("Effective focal length"),
              real("f_number", 2.8).pure().range(0.1, 1000.0).doc("Focal length over the diameter of the entrance pupil"),
              real("focus_distance", 2.0).unit("m").range(1.0e-3, 1.0e9).doc("Distance from the lens that is sharp"),
              real("shift_x", 0.0).unit("mm").range(-1.0e6, 1.0e6).doc("Shift of the lens to the right of the sensor's middle"),
              real("shift_y", 0.0).unit("mm").range(-1.0e6, 1.0e6).doc("Shift of the lens upwards"),
              choice("stop")
                  .option("circular", "Circular aperture stop")
                  .option("blades", "Regular polygon",
                          {integer("blade_count", 6).unit("blades").range(3, 64).doc("Number of blades"),
                           real("blade_rotation", 0.0).unit("deg").range(-360.0, 360.0).doc("Turn of the polygon")})
                  .doc("Shape of the aperture stop"),
              choice("distortion")
                  .option("none", "Straight lines stay straight")
                  .option(
                      "brown",
                      "Radial and decentring terms (Brown 1966): with x and y, to the right and down, the ideal distance from "
                      "the "
                      "axis over the focal length, and r2 = x2 + y2, the image is at x (1 + k1 r2 + k2 r4 + k3 r6) + 2 p1 x y + "
                      "p2 (r2 + 2 x2) and y (1 + k1 r2 + k2 r4 + k3 r6) + p1 (r2 + 2 y2) + 2 p2 x y",
                      {real("k1", 0.0).pure().range(-100.0, 100.0).doc("Coefficient of the square of the radius"),
                       real("k2", 0.0).pure().range(-100.0, 100.0).doc("Coefficient of its fourth power"),
                       real("k3", 0.0).pure().range(-100.0, 100.0).doc("Coefficient of its sixth power"),
                       real("p1", 0.0).pure().range(-100.0, 100.0).doc("First decentring coefficient"),
                       real("p2", 0.0).pure().range(-100.0, 100.0).doc("Second decentring coefficient")})
                  .doc("How the image deviates from a perspective"),
              choice("vignetting")
                  .option("natural", "Fourth power of the cosine of the field angle")
                  .option("none", "The same irradiance all over the sensor, as after a flat-field correction")
                  .doc("How the irradiance of the sensor falls towards the corners")}),
         .children = {child("sensor", "sensor", "ciexyz", "What its pixels are sensitive to"),
                      child("transmittance", "spectrum", "uniform", "Transmittance of the lens, 0 to 1",
                            {{"value", number(1.0)}})},
         .listClass = "output"});
    catalogue.add({.family = "instrument",
                   .type = "orthocam",
                   .summary = "Camera with parallel rays: no perspective, square pixels, everything is sharp",
                   .parameters = camera({viewWidth()}),
                   .children = sensorChild(),
                   .listClass = "output"});
    catalogue.add(
        {.family = "instrument",
         .type = "fisheyecam",
         .summary = "Camera with a circular image of a wide field; everything is sharp",
         .parameters =
             camera({choice("projection")
                         .option("equidistant", "Radius proportional to the field angle: r = f theta")
                         .option("equisolid", "Equal solid angles have equal areas: r = 2 f sin(theta / 2)")
                         .option("stereographic", "Small circles stay circles: r = 2 f tan(theta / 2)")
                         .option("orthographic", "Areas stand for horizontal illuminances: r = f sin(theta), up to 180 degrees")
                         .doc("Distance from the middle of the image for a direction at the angle theta to the axis"),
                     real("fov", 180.0).unit("deg").range(0.001, 360.0).doc("Full angle of the field"),
                     choice("fit")
                         .option("circle", "The whole circle lies in the image and touches its shorter sides")
                         .option("diagonal", "The circle goes through the corners of the image")
                         .doc("Size of the image circle")}),
         .children = sensorChild(),
         .listClass = "output"});
    catalogue.add({.family = "instrument",
                   .type = "spherecam",
                   .summary = "Camera that looks all around; everything is sharp",
                   .parameters = camera(sphereView()),
                   .children = sensorChild(),
                   .listClass = "output"});
    addIrradianceInstruments(catalogue);
    addLaboratoryInstruments(catalogue);
    catalogue.addLinked("instrument");
}

}  // namespace nemra::node
