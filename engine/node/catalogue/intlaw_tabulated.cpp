#include "engine/node/catalogue/intlaw_parts.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

constexpr const char* kGrid =
    "The samples, in any order, on a full grid of wavelengths and angles; without samples all light "
    "is absorbed";

/// A column per quantity after wavelength and angle. The quantities are given as name and documentation.
Parameter grid(std::string name, const std::vector<Parameter>& quantities, std::string doc) {
    Parameter result = table(std::move(name));
    result.column(wavelength("wavelength", 550.0).doc("Wavelength; left out: holds at every wavelength"));
    result.column(angle("angle", 0.0, 0.0, 90.0).doc("Angle of incidence, on the side from which light comes"));
    for (const Parameter& quantity : quantities) result.column(quantity);
    return result.doc(std::move(doc));
}

Parameter phase(std::string name) { return angle(std::move(name), 0.0, -360.0, 360.0); }

std::vector<Parameter> mixedQuantities() {
    return {share("reflectance", 0.0).doc("Reflectance for natural light"),
            share("transmittance", 0.0).doc("Transmittance for natural light")};
}

std::vector<Parameter> polarizedQuantities() {
    return {share("reflectance_s", 0.0).doc("Reflectance, polarised across the plane of incidence"),
            share("reflectance_p", 0.0).doc("Reflectance, polarised in the plane of incidence"),
            share("transmittance_s", 0.0).doc("Transmittance, polarised across the plane of incidence"),
            share("transmittance_p", 0.0).doc("Transmittance, polarised in the plane of incidence"),
            phase("reflection_phase").doc("Phase of p against s on reflection: the ellipsometric angle Delta"),
            phase("transmission_phase").doc("Phase of p against s on transmission")};
}

/// m11 to m44, row by row.
std::vector<Parameter> muellerQuantities() {
    std::vector<Parameter> result;
    for (int row = 1; row <= 4; ++row) {
        for (int column = 1; column <= 4; ++column) {
            const std::string place = std::to_string(row) + std::to_string(column);
            result.push_back(real("m" + place, 0.0)
                                 .pure()
                                 .range(-1.0, 1.0)
                                 .doc("Element in row " + std::to_string(row) + ", column " + std::to_string(column)));
        }
    }
    return result;
}

Parameter sameBack() {
    return boolean("same_back", true).doc("Light on the back meets the same law; else the tables of the back hold");
}

}  // namespace

void addTabulatedLaws(Catalogue& catalogue) {
    const std::string back = ", for light on the back if it differs";
    catalogue.add(
        {.family = "intlaw",
         .type = "mixtabulated",
         .summary = "Measured reflectance and transmittance for natural light, the mean of both polarisations",
         .parameters = {grid("samples", mixedQuantities(), kGrid), sameBack(),
                        grid("back_samples", mixedQuantities(), kGrid + back), tableInterpolation(), transmittedDirection()},
         .children = {glassChild("ior", "Index of the inside over that of the outside, which bends transmitted light")}});
    catalogue.add(
        {.family = "intlaw",
         .type = "poltabulated",
         .summary = "Measured reflectance and transmittance for both polarisations, with their phases",
         .parameters = {grid("samples", polarizedQuantities(), kGrid), sameBack(),
                        grid("back_samples", polarizedQuantities(), kGrid + back), tableInterpolation(), transmittedDirection()},
         .children = {glassChild("ior", "Index of the inside over that of the outside, which bends transmitted light")}});
    catalogue.add(
        {.family = "intlaw",
         .type = "mm44",
         .summary = "Mueller matrices of reflection and transmission by wavelength and angle (Mueller 1943)",
         .parameters = {info("frame",
                             "Stokes vectors (I, Q, U, V) with Q positive for light polarised across the plane of "
                             "incidence (s); U positive at +45 degrees from s, seen against the beam; V positive for "
                             "right-handed light: clockwise, seen against the beam")
                            .doc("Frame of the Stokes vectors on which the matrices act"),
                        grid("reflection", muellerQuantities(), "Matrices of reflection; none if empty"),
                        grid("transmission", muellerQuantities(), "Matrices of transmission; none if empty"),
                        choice("interpolation")
                            .option("linear", "Straight lines between the samples")
                            .option("nearest", "The nearest sample")
                            .doc("What lies between two samples; a linear mean of possible matrices is a possible one"),
                        transmittedDirection()},
         .children = {glassChild("ior", "Index of the inside over that of the outside, which bends transmitted light")}});
}

}  // namespace nemra::node
