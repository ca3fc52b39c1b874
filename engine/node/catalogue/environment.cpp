#include "engine/node/catalogue/environment_parts.h"
#include "engine/node/catalogue/families.h"

namespace nemra::node {

std::vector<ParameterSpec> orientation() {
    return {direction("up", 0.0, 1.0, 0.0).doc("Direction of the zenith"),
            direction("north", 0.0, 0.0, 1.0).doc("Direction of north; only its horizontal part counts")};
}

Parameter sunPosition() {
    const auto count = [](const char* name, int defaultValue, const char* unit, int minimum, int maximum) {
        return integer(name, defaultValue).unit(unit).range(minimum, maximum);
    };
    return choice("sun_position")
        .option("angles", "Given as elevation and azimuth",
                {real("sun_elevation", 45.0).unit("deg").range(-90.0, 90.0).doc("Angle of the sun above the horizon"),
                 real("sun_azimuth", 180.0)
                     .unit("deg")
                     .range(-360.0, 360.0)
                     .doc("Horizontal angle from north to the sun, clockwise seen from above: 90 is east")})
        .option(
            "place_and_time", "Computed from place and time (Reda and Andreas 2004)",
            {real("latitude", 48.0).unit("deg").range(-90.0, 90.0).doc("Geographic latitude, north positive"),
             real("longitude", 0.0).unit("deg").range(-180.0, 180.0).doc("Geographic longitude, east positive"),
             real("utc_offset", 0.0).unit("h").range(-14.0, 14.0).doc("Local time minus universal time, summer time included"),
             count("year", 2024, "years", 1900, 2100).doc("Year"), count("month", 6, "months", 1, 12).doc("Month"),
             count("day", 21, "days", 1, 31).doc("Day of the month"),
             real("hour", 12.0).unit("h").range(0.0, 24.0).doc("Local time of the day, with a decimal part")})
        .option("direction", "Given as a direction of the world",
                {direction("sun_direction", 0.0, 1.0, 1.0).doc("Direction to the sun")})
        .doc("What says where the sun is");
}

namespace {

Parameter level(std::string name, const char* unit) { return real(std::move(name), 1.0).unit(unit).range(0.0, 1.0e15); }

void addPictures(Catalogue& catalogue) {
    std::vector<ParameterSpec> own = {

        choice("mapping")
            .option("equirectangular", "Longitude from left to right, latitude from bottom to top, north in the middle")
            .option("angular", "Circle of the full sphere, radius proportional to the angle to north (Debevec 1998)")
            .option("mirror_ball", "Photograph of a mirroring ball from far away, north behind the camera")
            .option("fisheye", "Upper hemisphere, equidistant, zenith in the middle, north at the top")
            .option("cube_cross", "Vertical cross of the six sides of a cube, north in the middle")
            .doc("How directions lie in the picture"),
        real("rotation", 0.0)
            .unit("deg")
            .range(-360.0, 360.0)
            .doc("Turn of the picture about the zenith, clockwise seen from above"),
        choice("quantity")
            .option("scale", "The picture's values times a factor",
                    {level("scale", "cd/m2").doc("Luminance of a pixel with the value 1")})
            .option("horizontal_illuminance", "Scaled to an illuminance",
                    {level("horizontal_illuminance", "lx")
                         .doc("Illuminance of an unobstructed horizontal plane that faces the zenith")})
            .doc("What fixes the level of the light"),

        choice("upsampling")
            .option("spectrum", "The picture's colours become spectra (Mallett and Yuksel 2019), times the illuminant")
            .option("luminance", "The picture's luminance scales the illuminant")
            .doc("How a pixel's colour becomes a spectrum"),
    };
    catalogue.add({.family = "environment",
                   .type = "envmap",
                   .summary = "Picture of all that surrounds the scene",
                   .parameters = joined(orientation(), std::move(own)),
                   .children = {child("image", "image", "file", "The picture"),
                                child("illuminant", "spectrum", "preset", "Spectrum of a white pixel; only its shape counts",
                                      {{"preset", word("cie_d65")}})}});
}

void addDisc(Catalogue& catalogue) {
    catalogue.add(
        {.family = "environment",
         .type = "disc",
         .summary = "Disc of even radiance infinitely far away, black around it",
         .parameters =
             {direction("direction", 0.0, 1.0, 0.0).doc("Direction to the middle of the disc"),
              real("angular_diameter", 0.5332)
                  .unit("deg")
                  .range(1.0e-4, 360.0)
                  .doc("Angle across the disc; 180 is a hemisphere, 360 all around"),
              choice("quantity")
                  .option("spectrum", "The spectrum is the spectral radiance itself, W/(m2 sr nm)")
                  .option("luminance", "The spectrum is scaled to a luminance",
                          {level("luminance", "cd/m2").doc("Luminance of the disc")})
                  .option("irradiance", "The spectrum is scaled to an irradiance",
                          {level("irradiance", "W/m2").doc("Irradiance of a plane that faces the disc, from 360 to 830 nm")})
                  .option("illuminance", "The spectrum is scaled to an illuminance",
                          {level("illuminance", "lx").doc("Illuminance of a plane that faces the disc")})
                  .doc("What fixes the level of the light")},
         .children = {child("radiance", "spectrum", "uniform", "Spectral radiance, or its shape if a quantity fixes the level",
                            {{"value", number(1.0)}})}});
}

}  // namespace

void addEnvironmentClasses(Catalogue& catalogue) {
    catalogue.add({.family = "environment", .type = "black", .summary = "No light from outside"});
    catalogue.add(
        {.family = "environment",
         .type = "uniform",
         .summary = "The same radiance from all directions",
         .children = {child("radiance", "spectrum", "uniform", "Spectral radiance, W/(m2 sr nm)", {{"value", number(1.0)}})}});
    addDisc(catalogue);
    addPictures(catalogue);
    addSkies(catalogue);
    catalogue.add({.family = "environment",
                   .type = "additive",
                   .summary = "Sum of the environments of its list, such as a sky and a sun",
                   .listClass = "environment"});
    catalogue.addLinked("environment");
}

}  // namespace nemra::node
