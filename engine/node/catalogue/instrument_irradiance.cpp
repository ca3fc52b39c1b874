#include "engine/node/catalogue/instrument_parts.h"

namespace nemra::node {

namespace {

Parameter quantity() {
    return choice("quantity")
        .option("irradiance", "Light that arrives, W/m2; illuminance for a photometric sensor")
        .option("exitance", "Light that leaves, W/m2, without what the surface emits")
        .option("absorbed", "Light that arrives and doesn't leave, W/m2")
        .doc("What is measured at the surfaces");
}

Parameter side() {
    return choice("side")
        .option("facing", "The side that faces the camera")
        .option("front", "The side to which the normals point")
        .option("back", "The other side")
        .doc("Side of the surface on which light is measured");
}

Parameter normals() {
    return choice("normals")
        .option("geometric", "Those of the triangles: what a meter lying on the surface would read")
        .option("shading", "Those interpolated over a curved mesh")
        .doc("Normals against which the irradiance is measured");
}

/// A view whose pixels hold what arrives at the surface that they show.
Parameters surfaceView(Parameters own) {
    return camera(
        joined(std::move(own), {quantity(), side(), normals(),
                                boolean("through_null", true).doc("Look through surfaces that let all light pass straight")}));
}

void addView(Catalogue& catalogue, const char* type, const char* summary, Parameters own) {
    catalogue.add({.family = "instrument",
                   .type = type,
                   .summary = summary,
                   .parameters = surfaceView(std::move(own)),
                   .children = sensorChild(),
                   .listClass = "output"});
}

}  // namespace

void addIrradianceInstruments(Catalogue& catalogue) {
    addView(catalogue, "irradperspview", "Irradiance of the surfaces that a perspective view shows", {horizontalFov()});
    addView(catalogue, "irradorthoview", "Irradiance of the surfaces that a parallel view shows, as a plan of a floor",
            {viewWidth()});
    addView(catalogue, "irradsphereview", "Irradiance of the surfaces that a view all around shows", sphereView());
    catalogue.add(
        {.family = "instrument",
         .type = "lightmap",
         .summary = "Light over a geometry, pixel by pixel of its texture coordinates",
         .parameters = joined(
             pixels(512, 512),
             {link("geometry").doc("Name of the geometry; where several instances place it, the first one counts"),
              choice("quantity")
                  .option("irradiance", "Light that arrives, W/m2; illuminance for a photometric sensor")
                  .option("exitance", "Light that leaves, W/m2, without what the surface emits")
                  .option("radiance", "Radiance along the normal, W/(m2 sr)")
                  .doc("What is measured"),
              choice("side")
                  .option("front", "The side to which the normals point")
                  .option("back", "The other side")
                  .doc("Side of the surface on which light is measured"),
              normals(), real("u_minimum", 0.0).pure().range(-1.0e6, 1.0e6).doc("Texture coordinate u at the left edge"),
              real("u_maximum", 1.0).pure().range(-1.0e6, 1.0e6).doc("Texture coordinate u at the right edge"),
              real("v_minimum", 0.0).pure().range(-1.0e6, 1.0e6).doc("Texture coordinate v at the bottom edge"),
              real("v_maximum", 1.0).pure().range(-1.0e6, 1.0e6).doc("Texture coordinate v at the top edge"),
              integer("margin", 2)
                  .unit("pixels")
                  .range(0, 1024)
                  .doc("Pixels by which values are carried on beyond the seams, so that interpolation doesn't bring in black")}),
         .children = sensorChild(),
         .listClass = "output"});
    catalogue.add({.family = "instrument",
                   .type = "materialirrad",
                   .summary = "Light that arrives at all surfaces of a material, as a table",
                   .parameters = {link("material").doc("Name of the material"),
                                  choice("resolution")
                                      .option("total", "One value for all surfaces together")
                                      .option("instance", "One value for each instance")
                                      .option("triangle", "One value for each triangle or analytic shape of each instance")
                                      .doc("What one value stands for"),
                                  choice("quantity")
                                      .option("irradiance", "Mean over the surface of the light that arrives, W/m2")
                                      .option("power", "All light that arrives, W")
                                      .option("absorbed", "All light that arrives and doesn't leave, W")
                                      .doc("What is measured"),
                                  choice("side")
                                      .option("front", "The side to which the normals point")
                                      .option("back", "The other side")
                                      .option("both", "Both sides together")
                                      .doc("Side of the surfaces on which light is measured"),
                                  normals()},
                   .children = sensorChild(),
                   .listClass = "output"});
}

}  // namespace nemra::node
