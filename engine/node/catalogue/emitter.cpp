#include "engine/node/catalogue/families.h"

namespace nemra::node {

namespace {

Parameter quantity(std::string name, const char* unit) { return real(std::move(name), 1.0).unit(unit).range(0.0, 1.0e15); }

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
                          {quantity("total_radiance", "W/(m2 sr)").doc("Radiance, from 360 to 830 nm")})
                  .option("luminance", "The spectrum is scaled to a luminance", {quantity("luminance", "cd/m2").doc("Luminance")})
                  .option("exitance", "The spectrum is scaled to a radiant exitance",
                          {quantity("exitance", "W/m2").doc("Radiant exitance of an emitting side, from 360 to 830 nm")})
                  .option("luminous_exitance", "The spectrum is scaled to a luminous exitance",
                          {quantity("luminous_exitance", "lm/m2").doc("Luminous exitance of an emitting side")})
                  .option("power", "The spectrum is scaled to a radiant power",
                          {quantity("power", "W").doc("Power of the whole surface that carries the emitter, from 360 to 830 nm")})
                  .option("luminous_flux", "The spectrum is scaled to a luminous flux",
                          {quantity("luminous_flux", "lm").doc("Luminous flux of the whole surface that carries the emitter")})
                  .doc("What fixes the level of the emission"),
              choice("side")
                  .option("front", "Emits on the side to which the normals point")
                  .option("back", "Emits on the other side")
                  .option("both", "Emits on both sides")
                  .doc("Sides of the surface that emit")},
         .children = {child("radiance", "spectrum", "uniform", "Spectral radiance, or its shape if a quantity fixes the level",
                            {{"value", number(0.0)}})}});
    catalogue.addLinked("emitter");
}

}  // namespace nemra::node
