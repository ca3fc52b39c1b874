#include "engine/node/catalogue/emitter_parts.h"
#include "engine/node/catalogue/families.h"

namespace nemra::node {

Parameter emissionLevel(std::string name, const char* unit) { return real(std::move(name), 1.0).unit(unit).range(0.0, 1.0e15); }

Parameter directionalQuantity(const std::string& where) {
    return choice("quantity")
        .option("spectrum", "The spectrum is the spectral radiance " + where + ", W/(m2 sr nm)")
        .option("total_radiance", "The spectrum is scaled to a radiance " + where,
                {emissionLevel("total_radiance", "W/(m2 sr)").doc("Radiance " + where + ", from 360 to 830 nm")})
        .option("luminance", "The spectrum is scaled to a luminance " + where,
                {emissionLevel("luminance", "cd/m2").doc("Luminance " + where)})
        .option("exitance", "The spectrum is scaled to a radiant exitance",
                {emissionLevel("exitance", "W/m2").doc("Radiant exitance of an emitting side, from 360 to 830 nm")})
        .option("luminous_exitance", "The spectrum is scaled to a luminous exitance",
                {emissionLevel("luminous_exitance", "lm/m2").doc("Luminous exitance of an emitting side")})
        .option("power", "The spectrum is scaled to a radiant power",
                {emissionLevel("power", "W").doc("Power of the whole surface that carries the emitter, from 360 to 830 nm")})
        .option("luminous_flux", "The spectrum is scaled to a luminous flux",
                {emissionLevel("luminous_flux", "lm").doc("Luminous flux of the whole surface that carries the emitter")})
        .option("luminous_intensity", "The spectrum is scaled to a luminous intensity " + where,
                {emissionLevel("luminous_intensity", "cd")
                     .doc("Luminous intensity " + where + " of the whole surface, as if it were flat")})
        .doc("What fixes the level of the emission");
}

Parameter emittingSide() {
    return choice("side")
        .option("front", "Emits on the side to which the normals point")
        .option("back", "Emits on the other side")
        .option("both", "Emits on both sides")
        .doc("Sides of the surface that emit");
}

namespace {

ChildSpec axialRadiance() {
    return child("radiance", "spectrum", "uniform",
                 "Spectral radiance along the axis, which is the normal, or its shape if a quantity fixes the level",
                 {{"value", number(1.0)}});
}

Parameter angle(std::string name, double defaultValue, double maximum) {
    return real(std::move(name), defaultValue).unit("deg").range(1.0e-3, maximum);
}

/// A beam about the normal: its level, side and spectrum, and what only this one has.
void addBeam(Catalogue& catalogue, const char* type, const char* summary, std::vector<ParameterSpec> own) {
    catalogue.add({.family = "emitter",
                   .type = type,
                   .summary = summary,
                   .parameters = joined(std::move(own), {directionalQuantity("along the axis"), emittingSide()}),
                   .children = {axialRadiance()}});
}

void addBeams(Catalogue& catalogue) {
    addBeam(catalogue, "cone", "The same radiance inside a cone about the normal and none outside",
            {angle("half_angle", 30.0, 90.0).doc("Angle between the axis and the edge of the cone")});
    addBeam(catalogue, "softcone", "The same radiance inside a cone about the normal, fading out up to a second one",
            {angle("inner_angle", 25.0, 90.0).doc("Angle to the axis up to which the radiance is full"),
             angle("outer_angle", 35.0, 90.0).doc("Angle to the axis from which on there is none; at least the inner angle"),
             choice("falloff")
                 .option("smooth", "Cubic step in the angle, without kinks")
                 .option("linear", "Straight line in the angle")
                 .option("cosine", "Straight line in the cosine of the angle")
                 .doc("How the radiance falls between the two angles")});
    addBeam(
        catalogue, "cosexp", "Radiant intensity of a flat surface as a power of the cosine (Moreno and Sun 2008)",
        {choice("spread")
             .option(
                 "exponent", "Given as the exponent of the cosine",
                 {real("exponent", 1.0).pure().range(1.0e-3, 1.0e6).doc("Exponent of the intensity; 1 is a Lambertian emitter")})
             .option("half_angle", "Given as the angle of half the intensity",
                     {angle("half_angle", 60.0, 89.9).doc("Angle to the axis at which the intensity is half of the largest")})
             .doc("What says how wide the beam is")});
    addBeam(
        catalogue, "gaussian", "Gaussian beam in the angle to the normal",
        {choice("spread")
             .option("sigma", "Given as standard deviation", {angle("sigma", 10.0, 90.0).doc("Standard deviation of the angle")})
             .option("fwhm", "Given as full width", {angle("fwhm", 24.0, 180.0).doc("Full width at half of the radiance")})
             .option("elliptical", "Two full widths, as of laser diodes",
                     {angle("fwhm_x", 10.0, 180.0).doc("Full width at half of the radiance along the tangent"),
                      angle("fwhm_y", 30.0, 180.0).doc("Full width across the tangent")})
             .doc("What says how wide the beam is")});
    addBeam(catalogue, "singaussian", "Gaussian beam in the sine of the angle to the normal, as in the direction cosines",
            {choice("spread")
                 .option("sigma", "Given as standard deviation",
                         {real("sigma", 0.17).pure().range(1.0e-6, 1.0e3).doc("Standard deviation of the sine")})
                 .option("fwhm", "Given as full width", {angle("fwhm", 24.0, 179.0).doc("Full width at half of the radiance")})
                 .option("elliptical", "Two full widths, as of laser diodes",
                         {angle("fwhm_x", 10.0, 179.0).doc("Full width at half of the radiance along the tangent"),
                          angle("fwhm_y", 30.0, 179.0).doc("Full width across the tangent")})
                 .doc("What says how wide the beam is")});
    catalogue.add(
        {.family = "emitter",
         .type = "dirac",
         .summary = "Collimated light: all of it leaves along one direction",
         .parameters =
             {choice("axis")
                  .option("normal", "Along the normal of each point")
                  .option("object", "Along one direction that moves with the instance",
                          {direction("direction", 0.0, 0.0, 1.0).doc("Direction in which the light travels")})
                  .option("world", "Along one direction of the world",
                          {direction("direction", 0.0, 0.0, 1.0).doc("Direction in which the light travels")})
                  .doc("Direction of the light"),
              choice("quantity")
                  .option("spectrum", "The spectrum is the spectral irradiance across the beam, W/(m2 nm)")
                  .option("irradiance", "The spectrum is scaled to an irradiance across the beam",
                          {emissionLevel("irradiance", "W/m2").doc("Irradiance of a plane across the beam, from 360 to 830 nm")})
                  .option("illuminance", "The spectrum is scaled to an illuminance across the beam",
                          {emissionLevel("illuminance", "lx").doc("Illuminance of a plane across the beam")})
                  .option("power", "The spectrum is scaled to a radiant power",
                          {emissionLevel("power", "W")
                               .doc("Power of the whole surface that carries the emitter, from 360 to 830 nm")})
                  .option(
                      "luminous_flux", "The spectrum is scaled to a luminous flux",
                      {emissionLevel("luminous_flux", "lm").doc("Luminous flux of the whole surface that carries the emitter")})
                  .doc("What fixes the level of the emission"),
              emittingSide()},
         .children = {child("spectrum", "spectrum", "uniform", "Spectral irradiance across the beam, or its shape",
                            {{"value", number(1.0)}})}});
}

}  // namespace

void addEmitterClasses(Catalogue& catalogue) {
    catalogue.add(
        {.family = "emitter",
         .type = "lambertian",
         .summary = "Emits the same radiance in all directions",
         .parameters =
             {choice("quantity")
                  .option("spectrum", "The spectrum is the spectral radiance itself, W/(m2 sr nm)")
                  .option("total_radiance", "The spectrum is scaled to a radiance",
                          {emissionLevel("total_radiance", "W/(m2 sr)").doc("Radiance, from 360 to 830 nm")})
                  .option("luminance", "The spectrum is scaled to a luminance",
                          {emissionLevel("luminance", "cd/m2").doc("Luminance")})
                  .option("exitance", "The spectrum is scaled to a radiant exitance",
                          {emissionLevel("exitance", "W/m2").doc("Radiant exitance of an emitting side, from 360 to 830 nm")})
                  .option("luminous_exitance", "The spectrum is scaled to a luminous exitance",
                          {emissionLevel("luminous_exitance", "lm/m2").doc("Luminous exitance of an emitting side")})
                  .option("power", "The spectrum is scaled to a radiant power",
                          {emissionLevel("power", "W")
                               .doc("Power of the whole surface that carries the emitter, from 360 to 830 nm")})
                  .option(
                      "luminous_flux", "The spectrum is scaled to a luminous flux",
                      {emissionLevel("luminous_flux", "lm").doc("Luminous flux of the whole surface that carries the emitter")})
                  .doc("What fixes the level of the emission"),
              emittingSide()},
         .children = {child("radiance", "spectrum", "uniform", "Spectral radiance, or its shape if a quantity fixes the level",
                            {{"value", number(0.0)}})}});
    addBeams(catalogue);
    addMeasuredEmitters(catalogue);
    catalogue.addLinked("emitter");
}

}  // namespace nemra::node
