#include "engine/node/catalogue/bsdf_parts.h"

namespace nemra::node {

namespace {

constexpr const char* kFrame =
    "Frame of the angles: theta from the normal of the side that the light meets, phi counter-clockwise from growing u seen from "
    "the front; both directions point away from the surface, and theta_out beyond 90 degrees is transmission";

Parameter frame() { return info("frame", kFrame).doc("Frame of the directions"); }

Parameter count(std::string name, std::int32_t defaultCount) {
    return integer(std::move(name), defaultCount).unit("samples").range(1, 8192);
}

/// Which channels a block of data has: the rows say the wavelength of each.
Parameter channelWavelengths() {
    return table("channels")
        .column(wavelength("wavelength", 550.0).doc("Wavelength of the channel"))
        .doc("Channels of the data, in their order; without rows there is one channel, which holds at every wavelength");
}

Parameter valueScale() { return real("scale", 1.0).pure().range(0.0, 1.0e6).doc("Factor on all values"); }

Parameter side() {
    return choice("side")
        .option("both", "The back behaves as the front")
        .option("front", "The back is black")
        .doc("Side of the surface that was measured");
}

RawSlotSpec block(std::string name, std::string doc) { return {std::move(name), NEMRA_RAW_DATA_FLOAT, "1/sr", std::move(doc)}; }

/// Where a block of data comes from; each format that can be read has a name of its own.
Parameter dataSource(const char* format) {
    return choice("source")
        .option("data", "The raw data of the node")
        .option("file", format, {file("path").doc("The file")})
        .doc("Where the values come from");
}

NodeClass simpleIsotableClass() {
    return {.family = "bsdf",
            .type = "simpleisotable",
            .summary = "Measured isotropic BSDF as a list of samples",
            .parameters = {frame(),
                           table("samples")
                               .column(wavelength("wavelength", 550.0).doc("Wavelength; left out: holds at every wavelength"))
                               .column(angle("theta_in", 0.0, 0.0, 90.0).doc("Angle of incidence"))
                               .column(angle("theta_out", 0.0, 0.0, 180.0).doc("Angle of scattering"))
                               .column(angle("delta_phi", 0.0, 0.0, 180.0)
                                           .doc("Azimuth between both directions; the mirrored one is at 180 degrees"))
                               .column(real("value", 0.0).unit("1/sr").range(0.0, 1.0e9).doc("BSDF"))
                               .doc("The samples, in any order and number; without samples the surface is black"),
                           choice("lookup")
                               .option("linear", "Straight lines between the samples of a full grid")
                               .option("scattered", "Radial functions over scattered samples (Ward et al. 2014)")
                               .option("nearest", "The nearest sample")
                               .doc("What lies between the samples"),
                           valueScale(), side()},
            .children = {filterChild("filter", "Filter over the surface that multiplies the BSDF")}};
}

NodeClass isomapClass() {
    return {
        .family = "bsdf",
        .type = "isomap",
        .summary = "Isotropic BRDF painted as a picture over half and difference angle (Rusinkiewicz 1998)",
        .parameters = {info("axes",
                            "To the right: angle between normal and half vector, 0 to 90 degrees; upwards: angle between "
                            "half vector and light, 0 to 90 degrees")
                           .doc("Axes of the picture"),
                       choice("spacing")
                           .option("linear", "Angles in equal steps")
                           .option("square_root", "Half angle goes as the square of the place: finer near the mirror direction")
                           .doc("How the half angle is spread over the picture"),
                       valueScale(), side()},
        .children = {child("image", "image", "file", "The picture; its numbers are BRDF values in 1/sr"),
                     filterChild("filter", "Filter over the surface that multiplies the BRDF")}};
}

NodeClass rusinkiewiczClass() {
    return {
        .family = "bsdf",
        .type = "rusinkiewicztable",
        .summary = "Measured BRDF over half and difference vector (Rusinkiewicz 1998; Matusik et al. 2003)",
        .parameters = {dataSource("A file in the binary form of Matusik et al. (2003), three channels"), channelWavelengths(),
                       count("theta_half_count", 90)
                           .doc("Angles between normal and half vector, 0 to 90 degrees, as the square of the index"),
                       count("theta_difference_count", 90).doc("Angles between half vector and light, 0 to 90 degrees"),
                       count("phi_difference_count", 180).doc("Azimuths of the light about the half vector, 0 to 180 degrees"),
                       count("phi_half_count", 1).doc("Azimuths of the half vector, 0 to 360 degrees; 1 for an isotropic BRDF"),
                       valueScale(), side()},
        .children = {filterChild("filter", "Filter over the surface that multiplies the BRDF")},
        .rawSlots = {block("values", "BRDF, phi_difference fastest, then theta_difference, theta_half, phi_half, channel")}};
}

NodeClass equisolidClass() {
    return {.family = "bsdf",
            .type = "equisolidtable",
            .summary = "Measured BSDF over discs on which areas are proportional to solid angles (Lambert 1772)",
            .parameters = {info("projection",
                                "A disc of radius 1 fills the square; the centre is the normal, the edge the horizon, and "
                                "the radius is sqrt(2) sin(theta / 2); x to the right along growing u")
                               .doc("How directions lie on the squares"),
                           channelWavelengths(),
                           count("incident_resolution", 1)
                               .doc("Incident directions along a side of their square; of an isotropic "
                                    "BSDF along the radius"),
                           count("scattered_resolution", 64).doc("Scattered directions along a side of their square"),
                           boolean("isotropic", true).doc("Incident directions lie on the radius along growing x only"),
                           valueScale(), side()},
            .children = {filterChild("filter", "Filter over the surface that multiplies the BSDF")},
            .rawSlots = {block("reflection", "BRDF: scattered x fastest, then scattered y, incident x, incident y, channel"),
                         block("transmission", "BTDF in the same order; none if empty")}};
}

NodeClass iglooClass() {
    return {
        .family = "bsdf",
        .type = "igloomatrix",
        .summary = "Matrix between the patches of two hemispheres that are cut into rings, as blinds are given (Klems 1994)",
        .parameters = {choice("source")
                           .option("data", "The raw data of the node")
                           .option("file", "A file in the XML form for windows and blinds", {file("path").doc("The file")})
                           .option("functions", "The child functions")
                           .doc("Where the matrices come from"),
                       choice("division")
                           .option("klems_full", "145 patches (Klems 1994)")
                           .option("klems_half", "73 patches (Klems 1994)")
                           .option("klems_quarter", "41 patches (Klems 1994)")
                           .option("rings", "The table rings")
                           .doc("How the hemispheres are cut"),
                       table("rings")
                           .column(
                               angle("upper_theta", 90.0, 0.1, 90.0).doc("Angle from the normal to the outer edge of the ring"))
                           .column(integer("patches", 1).unit("patches").range(1, 4096).doc("Patches of equal width in the ring"))
                           .doc("Rings from the normal outwards, if the division is by rings"),
                       channelWavelengths(), valueScale()},
        .children = {child("functions", "rtf", "rtf", "Measured functions, if they are the source"),
                     filterChild("filter", "Filter over the surface that multiplies the BSDF")},
        .rawSlots = {block("front_reflection", "Front: incident patch fastest, then scattered patch, channel"),
                     block("back_reflection", "Back, in the same order"),
                     block("front_transmission", "From the front to the back, in the same order"),
                     block("back_transmission", "From the back to the front, in the same order")}};
}

}  // namespace

void addMeasuredBsdfs(Catalogue& catalogue) {
    catalogue.add(simpleIsotableClass());
    catalogue.add(isomapClass());
    catalogue.add(rusinkiewiczClass());
    catalogue.add(equisolidClass());
    catalogue.add(iglooClass());
}

}  // namespace nemra::node
