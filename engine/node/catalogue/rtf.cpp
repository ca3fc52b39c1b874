#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

constexpr const char* kAngles =
    "theta from the normal of the front; phi counter-clockwise from growing u, seen from the front; incident and scattered "
    "directions both point away from the surface";

Parameter directions(std::string name, std::int32_t defaultCount) {
    return integer(std::move(name), defaultCount).unit("directions").range(1, 4096);
}

NodeClass rtfClass() {
    return {
        .family = "rtf",
        .type = "rtf",
        .summary = "Measured reflection and transmission function at one wavelength or over one band",
        .parameters = {info("angles", kAngles).doc("Frame of the directions"),
                       choice("band")
                           .option("all", "Holds at every wavelength")
                           .option("line", "Measured at a wavelength", {wavelength("center", 550.0).doc("Wavelength")})
                           .option("range", "Mean over a band",
                                   {wavelength("minimum", 380.0).doc("Lower end"), wavelength("maximum", 780.0).doc("Upper end")})
                           .doc("Wavelengths that it was measured at"),
                       directions("theta_in_count", 1).doc("Polar angles of incidence, in equal steps from 0 to 90 degrees"),
                       directions("phi_in_count", 1).doc("Azimuths of incidence, in equal steps over 360 degrees; 1: isotropic"),
                       directions("theta_out_count", 91).doc("Polar angles of scattering, in equal steps from 0 to 90 degrees"),
                       directions("phi_out_count", 360).doc("Azimuths of scattering, in equal steps over 360 degrees"),
                       real("scale", 1.0).pure().range(0.0, 1.0e6).doc("Factor on all values")},
        .rawSlots = {{"front_reflection", NEMRA_RAW_DATA_FLOAT, "1/sr",
                      "BRDF of the front, phi_out fastest, then theta_out, phi_in, theta_in"},
                     {"back_reflection", NEMRA_RAW_DATA_FLOAT, "1/sr", "BRDF of the back, in the same order"},
                     {"front_transmission", NEMRA_RAW_DATA_FLOAT, "1/sr", "BTDF for light on the front, in the same order"},
                     {"back_transmission", NEMRA_RAW_DATA_FLOAT, "1/sr", "BTDF for light on the back, in the same order"}}};
}

}  // namespace

void addRtfClasses(Catalogue& catalogue) {
    catalogue.add(rtfClass());
    catalogue.add({.family = "rtf",
                   .type = "spectralrtfs",
                   .summary = "Reflection and transmission functions of several wavelengths or bands; black without any",
                   .parameters = {choice("interpolation")
                                      .option("linear", "Straight lines between the wavelengths")
                                      .option("nearest", "The function of the nearest wavelength")
                                      .doc("What lies between two wavelengths; outside them the first or last one holds")},
                   .listClass = "rtf"});
    catalogue.addLinked("rtf");
}

}  // namespace nemra::node
