#include "engine/node/catalogue/bsdf_parts.h"

namespace nemra::node {

namespace {

Parameter multipleReflections() {
    return choice("multiple_reflections")
        .option("single", "Light that meets one facet; rough surfaces come out darker than they are")
        .option("compensated", "What is missing is added as a broad lobe (Kulla and Conty 2017)")
        .doc("Light that meets several facets");
}

NodeClass reflectiveClass() {
    return {.family = "bsdf",
            .type = "reflective",
            .summary = "Reflecting surface of facets; what isn't reflected is absorbed (Torrance and Sparrow 1967)",
            .parameters = {multipleReflections()},
            .children = {child("law", "intlaw", "cfresnel", "Law by which a facet reflects"),
                         roughnessChild("roughness", "trowbridge", "Distribution of the facets"),
                         filterChild("filter", "Filter over the surface that multiplies the reflectance")}};
}

NodeClass refractiveClass() {
    return {.family = "bsdf",
            .type = "refractive",
            .summary = "Surface of facets that reflects and refracts, as of glass (Walter et al. 2007)",
            .parameters = {multipleReflections()},
            .children = {child("law", "intlaw", "fresnel", "Law by which a facet reflects and refracts"),
                         roughnessChild("roughness", "flat", "Distribution of the facets"),
                         filterChild("reflection_filter", "Filter over the surface that multiplies the reflected light"),
                         filterChild("transmission_filter", "Filter over the surface that multiplies the transmitted light")}};
}

NodeClass glossyClass() {
    return {.family = "bsdf",
            .type = "glossy",
            .summary = "Diffuse body with a glossy surface that takes its share first (Ashikhmin and Shirley 2000)",
            .children = {reflectanceChild("diffuse_reflectance", 0.5, "Reflectance of the body"),
                         reflectanceChild("specular_reflectance", 0.04, "Reflectance of the surface at normal incidence"),
                         roughnessChild("roughness", "ashikhminshirley", "Distribution of the facets"),
                         filterChild("diffuse_filter", "Filter over the surface that multiplies the diffuse reflectance"),
                         filterChild("specular_filter", "Filter over the surface that multiplies the specular reflectance")}};
}

NodeClass phongClass() {
    return {.family = "bsdf",
            .type = "phong",
            .summary = "Diffuse part and a cosine lobe about the mirrored direction (Phong 1975; Lafortune and Willems 1994)",
            .parameters = {real("exponent", 50.0).pure().range(0.0, 1.0e7).doc("Power of the cosine of the lobe")},
            .children = {reflectanceChild("diffuse_reflectance", 0.5, "Reflectance of the diffuse part"),
                         reflectanceChild("specular_reflectance", 0.2,
                                          "Reflectance of the lobe at normal incidence; both together at most 1"),
                         filterChild("diffuse_filter", "Filter over the surface that multiplies the diffuse reflectance"),
                         filterChild("specular_filter", "Filter over the surface that multiplies the lobe"),
                         scalarChild("exponent_scale", 1.0, "Factor on the exponent that can vary over the surface")}};
}

NodeClass lobeClass() {
    return {
        .family = "bsdf",
        .type = "lobe",
        .summary = "One lobe of given width about a direction: diffusing foils, satin mirrors, retroreflectors",
        .parameters = {choice("axis")
                           .option("reflection", "The mirrored direction")
                           .option("transmission", "Straight on")
                           .option("retroreflection", "Back to where the light came from")
                           .option("normal", "The normal on the side of the light")
                           .option("back_normal", "The normal on the far side")
                           .doc("Middle of the lobe"),
                       choice("shape")
                           .option("gaussian", "Gaussian over the angle from the middle",
                                   {angle("half_width", 5.0, 0.01, 90.0).doc("Angle at which the lobe has half of its peak")})
                           .option("cosine", "Power of the cosine of the angle from the middle (Lafortune et al. 1997)",
                                   {real("exponent", 50.0).pure().range(0.0, 1.0e7).doc("Power of the cosine")})
                           .option("cone", "The same everywhere within a cone",
                                   {angle("half_angle", 5.0, 0.01, 90.0).doc("Angle between axis and edge of the cone")})
                           .doc("How the lobe falls off; what would go through the surface is cut off and the rest scaled up")},
        .children = {reflectanceChild("reflectance", 0.5, "Share of the light that is in the lobe"),
                     filterChild("filter", "Filter over the surface that multiplies the lobe")}};
}

NodeClass velvetClass() {
    return {
        .family = "bsdf",
        .type = "velvet",
        .summary = "Diffuse cloth with a sheen at grazing angles (Ashikhmin and Premoze 2007)",
        .parameters = {real("sigma", 0.3)
                           .pure()
                           .range(0.01, 10.0)
                           .doc("Spread of the fibres: density of normals goes as exp(-cot(tilt)^2 / sigma^2)"),
                       real("amplitude", 4.0).pure().range(0.0, 1000.0).doc("Density of upright fibres over that of the ground")},
        .children = {reflectanceChild("reflectance", 0.2, "Reflectance of the diffuse ground"),
                     reflectanceChild("sheen_reflectance", 0.05, "Reflectance of a fibre at normal incidence"),
                     filterChild("filter", "Filter over the surface that multiplies the diffuse reflectance")}};
}

NodeClass sparklifyClass() {
    return {.family = "bsdf",
            .type = "sparklify",
            .summary = "Sparkling mirror flakes on another surface (Jakob et al. 2014)",
            .parameters = {real("flake_density", 100.0).unit("1/mm2").range(0.0, 1.0e9).doc("Flakes per area"),
                           real("flake_diameter", 20.0).unit("um").range(0.1, 1.0e5).doc("Diameter of a flake"),
                           angle("flake_tilt", 10.0, 0.0, 90.0).doc("Standard deviation of the tilt of the flakes"),
                           angle("glint_width", 1.0, 0.01, 90.0).doc("Half width of the reflection of one flake"),
                           integer("seed", 0).pure().range(0, 2147483647).doc("Another seed gives other flakes")},
            .children = {child("base", "bsdf", "lambertian", "Surface between the flakes"),
                         reflectanceChild("flake_reflectance", 0.9, "Reflectance of a flake"),
                         scalarChild("coverage", 1.0, "Factor on the density of flakes that can vary over the surface")}};
}

NodeClass diffractionClass() {
    return {.family = "bsdf",
            .type = "reflective_diffraction_map",
            .summary = "Diffracting mirror; the pattern spreads in direction cosines as the wavelength (Harvey et al. 1999)",
            .parameters =
                {choice("pattern")
                     .option("image", "The child image shows how much goes where",
                             {wavelength("reference_wavelength", 550.0).doc("Wavelength at which the picture holds"),
                              real("extent", 1.0)
                                  .pure()
                                  .range(1.0e-6, 100.0)
                                  .doc("Change of the direction cosines at the edge of the picture; no change in its middle")})
                     .option("grating", "Parallel lines; the table orders says how much goes into which order",
                             {real("period", 1600.0).unit("nm").range(10.0, 1.0e7).doc("Distance of the lines")})
                     .option("crossed", "Lines in two directions; the table orders says how much goes into which order",
                             {real("period_x", 1600.0).unit("nm").range(10.0, 1.0e7).doc("Period along x"),
                              real("period_y", 1600.0).unit("nm").range(10.0, 1.0e7).doc("Period along y")})
                     .doc("What the pattern of directions comes from"),
                 table("orders")
                     .column(integer("order_x", 0).pure().range(-1000, 1000).doc("Order along x, across the lines"))
                     .column(integer("order_y", 0).pure().range(-1000, 1000).doc("Order along y, of a crossed pattern"))
                     .column(share("efficiency", 1.0).doc("Share of the reflected light in this order"))
                     .doc("Orders of a grating; those that can't leave the surface are lost; without rows there is order 0 only"),
                 angle("rotation", 0.0, -360.0, 360.0).doc("Angle from growing u to the x axis of the pattern")},
            .children = {
                reflectanceChild("reflectance", 1.0, "Share of the light that is reflected, over all orders"),
                child("image", "image", "file", "Relative power by change of the direction cosines, if the pattern is an image"),
                filterChild("filter", "Filter over the surface that multiplies the reflectance")}};
}

}  // namespace

void addGlossyBsdfs(Catalogue& catalogue) {
    catalogue.add(reflectiveClass());
    catalogue.add(refractiveClass());
    catalogue.add(glossyClass());
    catalogue.add(phongClass());
    catalogue.add(lobeClass());
    catalogue.add(velvetClass());
    catalogue.add(sparklifyClass());
    catalogue.add(diffractionClass());
}

}  // namespace nemra::node
