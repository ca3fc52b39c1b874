/// The family intlaw in parts, and the words that they share.
#pragma once

#include "engine/node/catalogue/build.h"

namespace nemra::node {

/// foil, halffoil, advfoil.
void addFoilLaws(Catalogue& catalogue);
/// mixtabulated, poltabulated, mm44.
void addTabulatedLaws(Catalogue& catalogue);

/// Choice `index_source`: a child `ior`, or the media.
Parameter indexSource();
/// Choice `transmitted_direction`: refracted by a child `ior`, or straight on.
Parameter transmittedDirection();
/// Choice `axis_reference` of a polarising element.
Parameter polarizationAxis();
/// A refractive index, by default that of a common crown glass.
ChildSpec glassChild(std::string name, std::string doc);

}  // namespace nemra::node
