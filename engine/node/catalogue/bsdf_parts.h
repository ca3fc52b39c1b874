/// The family bsdf in parts, and the words that they share.
#pragma once

#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

/// Facets, lobes, cloth, flakes, gratings.
void addGlossyBsdfs(Catalogue& catalogue);
/// A body under a clear coat: coateddiffuse, carpaint.
void addCoatedBsdfs(Catalogue& catalogue);
/// fluo_lambertian, fluo_oren_nayar.
void addFluorescentBsdfs(Catalogue& catalogue);
/// Measured functions as tables, blocks of data, pictures.
void addMeasuredBsdfs(Catalogue& catalogue);
/// Those made of others: blend, additive, doublesided, switch.
void addCombinedBsdfs(Catalogue& catalogue);

/// A share of the light, 0 to 1 at each wavelength.
ChildSpec reflectanceChild(std::string name, double value, std::string doc);
/// A rough surface, or a smooth one if the type is "flat".
ChildSpec roughnessChild(std::string name, std::string type, std::string doc);
/// Parameter `sigma` of Oren and Nayar, and which of their formulas.
std::vector<ParameterSpec> orenNayarParameters();

}  // namespace nemra::node
