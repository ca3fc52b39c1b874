#include "engine/node/catalogue/instrument_parts.h"

namespace nemra::node {

namespace {

/// How the pixels of a picture lie in space, as far as it is known: what solid angles and glare ratings need.
Parameter knownProjection() {
    return choice("projection")
        .option("unknown", "Pixels have no direction; solid angles and glare ratings aren't available")
        .option("perspective", "Perspective with square pixels", {horizontalFov()})
        .option("equidistant", "Fisheye image, radius proportional to the field angle",
                {real("fov", 180.0).unit("deg").range(0.001, 360.0).doc("Full angle across the shorter side of the image")})
        .option("equisolid", "Fisheye image, equal areas for equal solid angles",
                {real("fov", 180.0).unit("deg").range(0.001, 360.0).doc("Full angle across the shorter side of the image")})
        .option("equirectangular", "Longitude from left to right, latitude from bottom to top, the full sphere")
        .doc("Directions of the pixels");
}

}  // namespace

void addLaboratoryInstruments(Catalogue& catalogue) {
    catalogue.add(
        {.family = "instrument",
         .type = "fouriercam",
         .summary = "Conoscopic camera: how the light that leaves a small spot is distributed over directions (Leroux 1993)",
         .parameters = camera(
             {real("spot_diameter", 1.0e-3)
                  .unit("m")
                  .range(1.0e-9, 1.0e6)
                  .doc("Diameter of the spot about the target, across the axis; directions are those of its light"),
              real("max_angle", 80.0)
                  .unit("deg")
                  .range(0.001, 90.0)
                  .doc("Largest angle to the axis, at the rim of the image circle"),
              choice("projection")
                  .option("orthographic", "Radius proportional to the sine of the angle, as in the focal plane of the lens")
                  .option("equidistant", "Radius proportional to the angle, as displays are documented")
                  .doc("How directions lie in the image")}),
         .children = sensorChild(),
         .listClass = "output"});
    catalogue.add(
        {.family = "instrument",
         .type = "bsdfcapture",
         .summary = "Goniophotometer: lights a sample with a parallel beam and measures its BSDF, 1/sr",
         .parameters =
             {vector("center", 0.0, 0.0, 0.0).unit("m").range(-1.0e9, 1.0e9).doc("Middle of the sample"),
              direction("normal", 0.0, 0.0, 1.0).doc("Normal of the sample"),
              direction("tangent", 1.0, 0.0, 0.0)
                  .doc("Direction of azimuth 0; only its part across the normal counts. Azimuths turn towards normal x tangent"),
              real("sample_width", 0.1).unit("m").range(1.0e-9, 1.0e6).doc("Extent of the lit area along the tangent"),
              real("sample_height", 0.1).unit("m").range(1.0e-9, 1.0e6).doc("Extent of the lit area across it"),
              choice("side")
                  .option("front", "The beam comes from the side to which the normal points")
                  .option("back", "The beam comes from the other side")
                  .doc("Side that is lit"),
              choice("component")
                  .option("reflection", "Light that comes back to the lit side")
                  .option("transmission", "Light that leaves on the other side")
                  .option("both", "Reflection, then transmission")
                  .doc("Which light is collected"),
              choice("basis")
                  .option("grid", "Even steps of polar angle and azimuth",
                          {integer("incident_theta_count", 10)
                               .unit("angles")
                               .range(1, 1024)
                               .doc("Polar angles of the beam, in even steps from 0; 90 degrees is the one that would follow"),
                           integer("incident_phi_count", 1)
                               .unit("angles")
                               .range(1, 4096)
                               .doc("Azimuths of the beam over 360 degrees; 1 for an isotropic sample"),
                           integer("outgoing_theta_count", 90)
                               .unit("angles")
                               .range(1, 4096)
                               .doc("Polar angles that are measured: the middles of so many parts of 0 to 90 degrees"),
                           integer("outgoing_phi_count", 360)
                               .unit("angles")
                               .range(1, 8192)
                               .doc("Azimuths that are measured, the first one at 0")})
                  .option("klems", "Patches of about equal projected solid angle for windows (Klems 1994)",
                          {choice("klems_patches")
                               .option("full", "145 patches")
                               .option("half", "77 patches")
                               .option("quarter", "41 patches")
                               .doc("How many patches a hemisphere has")})
                  .option("equal_area",
                          "Square grid on the disc of the hemisphere, of equal projected solid angles (Shirley and Chiu 1997)",
                          {integer("resolution", 32)
                               .unit("patches")
                               .range(1, 1024)
                               .doc("Patches along a side of the square, of the beam and of what is measured")})
                  .doc(
                      "Directions that the beam comes from (columns of the result) and those in which light is measured (rows)")},
         .children = sensorChild(),
         .listClass = "output"});
    catalogue.add(
        {.family = "instrument",
         .type = "defaultrawinstrument",
         .summary = "Stands in results of which no instrument is known, such as pictures read from a file; can't be rendered",
         .parameters = {choice("quantity")
                            .option("raw", "Numbers of unknown meaning")
                            .option("scene_radiance", "Radiances, W/(m2 sr); luminances for a photometric sensor")
                            .option("scene_irradiance", "Irradiances, W/m2; illuminances for a photometric sensor")
                            .doc("What the pixels hold"),
                        knownProjection()},
         .children = sensorChild(),
         .listClass = "output"});
    catalogue.add(
        {.family = "instrument",
         .type = "imported",
         .summary = "Measurement made elsewhere: a calibrated picture from a file, and what is known of how it was taken",
         .parameters =
             camera({choice("quantity")
                         .option("scene_radiance", "Radiances, W/(m2 sr); luminances for a photometric sensor")
                         .option("scene_irradiance", "Irradiances, W/m2; illuminances for a photometric sensor")
                         .option("raw", "Numbers of unknown meaning")
                         .doc("What the pixels hold"),
                     real("calibration", 1.0).pure().range(0.0, 1.0e15).doc("Factor from the picture's values to that quantity"),
                     knownProjection()}),
         .children = {child("sensor", "sensor", "ciexyz", "What its pixels were sensitive to"),
                      child("image", "image", "file", "The picture; its size replaces width and height")},
         .listClass = "output"});
}

}  // namespace nemra::node
