#include "engine/node/catalogue/environment_parts.h"

namespace nemra::node {

namespace {

/// Orientation and sun, then what only this model has.
std::vector<ParameterSpec> sky(std::vector<ParameterSpec> own) {
    return joined(joined(orientation(), {sunPosition()}), std::move(own));
}

Parameter ground() {
    return choice("ground")
        .option("black", "No light from below the horizon")
        .option("diffuse", "An endless diffuse ground in the light of this sky",
                {real("ground_reflectance", 0.2).pure().range(0.0, 1.0).doc("Reflectance of the ground at all wavelengths")})
        .doc("What lies below the horizon");
}

Parameter sunDisc() {
    return boolean("sun_disc", true).doc("The sun itself is part of the sky; without it only the light that the air scatters");
}

Parameter turbidity(double minimum) {
    return real("turbidity", 3.0)
        .pure()
        .range(minimum, 10.0)
        .doc("Optical thickness of the atmosphere over that of pure air; about 2 on a clear day, 10 in haze");
}

Parameter skyScale() { return real("scale", 1.0).pure().range(0.0, 1.0e15).doc("Factor on all radiances"); }

Parameter level(std::string name, double defaultValue, const char* unit, double maximum) {
    return real(std::move(name), defaultValue).unit(unit).range(0.0, maximum);
}

ChildSpec shape(const char* doc) { return child("spectrum", "spectrum", "preset", doc, {{"preset", word("cie_d65")}}); }

void addSpectralSkies(Catalogue& catalogue) {
    catalogue.add({.family = "environment",
                   .type = "preetham",
                   .summary = "Clear sky by turbidity, with its spectra (Preetham, Shirley and Smits 1999)",
                   .parameters = sky({turbidity(2.0), sunDisc(), ground(), skyScale()})});
    catalogue.add(
        {.family = "environment",
         .type = "hosek",
         .summary = "Clear sky by turbidity and ground, fitted to simulations, with its spectra (Hosek and Wilkie 2012)",
         .parameters = sky({turbidity(1.0), sunDisc(),
                            choice("ground")
                                .option("black", "No light from below the horizon")
                                .option("diffuse", "An endless diffuse ground of that reflectance in the light of this sky")
                                .doc("What lies below the horizon"),
                            skyScale()}),
         .children = {child("ground_albedo", "spectrum", "uniform",
                            "Reflectance of the ground, 0 to 1, which also brightens the sky", {{"value", number(0.2)}})}});
}

void addLuminanceSkies(Catalogue& catalogue) {
    catalogue.add(
        {.family = "environment",
         .type = "ciesky",
         .summary = "CIE standard general sky (ISO 15469:2004, CIE S 011): relative luminances of 15 types of sky",
         .parameters =
             sky({integer("sky_type", 12)
                      .pure()
                      .range(1, 16)
                      .doc("1 steep overcast sky, 5 uniform sky, 7 partly cloudy sky, 12 clear sky of low turbidity, 13 polluted "
                           "clear "
                           "sky; 16 traditional overcast sky (Moon and Spencer 1942)"),
                  choice("quantity")
                      .option("zenith_luminance", "Scaled to a luminance of the zenith",
                              {level("zenith_luminance", 3000.0, "cd/m2", 1.0e15).doc("Luminance of the zenith")})
                      .option("horizontal_illuminance", "Scaled to an illuminance",
                              {level("horizontal_illuminance", 10000.0, "lx", 1.0e15)
                                   .doc("Illuminance of an unobstructed horizontal plane, without the sun")})
                      .option("horizontal_irradiance", "Scaled to an irradiance",
                              {level("horizontal_irradiance", 100.0, "W/m2", 1.0e15)
                                   .doc("Irradiance of an unobstructed horizontal plane, without the sun, from 360 to 830 nm")})
                      .doc("What fixes the level of the sky"),
                  ground()}),
         .children = {shape("Spectrum of the sky; only its shape counts")}});
    catalogue.add(
        {.family = "environment",
         .type = "perezsky",
         .summary = "All-weather sky from measured irradiances (Perez, Seals and Michalsky 1993)",
         .parameters = sky(
             {choice("input")
                  .option("irradiances", "Irradiances of a weather file; efficacies by Perez et al. (1990)",
                          {level("direct_normal_irradiance", 500.0, "W/m2", 2000.0).doc("Sun alone, on a plane that faces it"),
                           level("diffuse_horizontal_irradiance", 100.0, "W/m2", 2000.0).doc("Sky alone, on a horizontal plane"),
                           real("dew_point", 11.0).unit("degC").range(-90.0, 60.0).doc("Dew point temperature of the air")})
                  .option(
                      "illuminances", "Measured illuminances",
                      {level("direct_normal_illuminance", 50000.0, "lx", 250000.0).doc("Sun alone, on a plane that faces it"),
                       level("diffuse_horizontal_illuminance", 12000.0, "lx", 250000.0).doc("Sky alone, on a horizontal plane")})
                  .doc("What is known of the weather"),
              sunDisc(), ground()}),
         .children = {shape("Spectrum of the sky; only its shape counts"),
                      child("sun_spectrum", "spectrum", "blackbody", "Spectrum of the sun; only its shape counts",
                            {{"temperature", number(5800.0)}})}});
}

void addSun(Catalogue& catalogue) {
    catalogue.add(
        {.family = "environment",
         .type = "directsun",
         .summary = "The sun alone, as a disc in a black sky",
         .parameters =
             sky({real("angular_diameter", 0.5332).unit("deg").range(1.0e-4, 90.0).doc("Angle across the sun"),
                  choice("limb_darkening")
                      .option("none", "Even radiance")
                      .option("linear", "Darker towards the rim: 1 - u (1 - cos) (Schwarzschild 1906)",
                              {real("darkening", 0.6).pure().range(0.0, 1.0).doc("Coefficient u at all wavelengths")})
                      .doc("How the radiance falls from the middle of the disc to its rim"),
                  choice("quantity")
                      .option("irradiance", "The spectrum is scaled to an irradiance",
                              {level("irradiance", 900.0, "W/m2", 1.0e9)
                                   .doc("Irradiance of a plane that faces the sun, from 360 to 830 nm")})
                      .option("illuminance", "The spectrum is scaled to an illuminance",
                              {level("illuminance", 100000.0, "lx", 1.0e12).doc("Illuminance of a plane that faces the sun")})
                      .option("turbidity",
                              "Solar radiance behind an atmosphere (Preetham, Shirley and Smits 1999), without the spectrum",
                              {turbidity(1.0)})
                      .option("spectrum", "The spectrum is the spectral irradiance of a plane that faces the sun, W/(m2 nm)")
                      .doc("What fixes the level of the light")}),
         .children = {child("spectrum", "spectrum", "blackbody",
                            "Spectrum of the sun, or its shape if a quantity fixes the level",
                            {{"temperature", number(5800.0)}})}});
}

}  // namespace

void addSkies(Catalogue& catalogue) {
    addSpectralSkies(catalogue);
    addLuminanceSkies(catalogue);
    addSun(catalogue);
}

}  // namespace nemra::node
