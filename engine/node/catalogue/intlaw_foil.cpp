#include "engine/node/catalogue/intlaw_parts.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

Parameter thickness() { return real("thickness", 100.0).unit("um").range(0.0, 1.0e6).doc("Thickness of the foil"); }

Parameter openShare() {
    return share("open_share", 0.0).doc("Share of the area that is holes, through which light goes straight on");
}

ChildSpec absorption() { return spectrumChild("absorption", 0.0, "Absorption coefficient of the foil, 1/m"); }

ChildSpec angular(std::string name, double value, std::string doc) {
    return child(std::move(name), "avspectrum", "table", std::move(doc), {{"default_value", number(value)}});
}

}  // namespace

// Thin sheets drawn as one surface. Light leaves them where it came in; reflections inside are added without interference.
void addFoilLaws(Catalogue& catalogue) {
    catalogue.add({.family = "intlaw",
                   .type = "foil",
                   .summary = "Clear foil or pane between two equal media, with all reflections inside (Stokes 1862)",
                   .parameters = {thickness(), openShare()},
                   .children = {glassChild("ior", "Refractive index of the foil"), absorption(),
                                spectrumChild("outer_ior", 1.0, "Refractive index of the media on both sides")}});
    catalogue.add({.family = "intlaw",
                   .type = "halffoil",
                   .summary = "Foil in optical contact with the body behind it, with all reflections inside (Stokes 1862)",
                   .parameters = {indexSource(), thickness(), openShare()},
                   .children = {glassChild("foil_ior", "Refractive index of the foil"), absorption(),
                                glassChild("ior", "Index of the body over that of the outside, if it is the source")}});
    catalogue.add(
        {.family = "intlaw",
         .type = "advfoil",
         .summary = "Foil with measured reflectance and transmittance by wavelength and angle, for light on either side",
         .parameters = {openShare(),
                        boolean("same_back", true).doc("The back behaves as the front; the children of the back are not used")},
         .children = {angular("front_reflectance", 0.08, "Reflectance for light on the front, 0 to 1"),
                      angular("front_transmittance", 0.92, "Transmittance for light on the front, 0 to 1"),
                      angular("back_reflectance", 0.08, "Reflectance for light on the back, 0 to 1"),
                      angular("back_transmittance", 0.92, "Transmittance for light on the back, 0 to 1")}});
}

}  // namespace nemra::node
