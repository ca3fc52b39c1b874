/// What several classes of emitters share.
#pragma once

#include "engine/node/catalogue/build.h"

namespace nemra::node {

/// A level of emission; the unit says which.
Parameter emissionLevel(std::string name, const char* unit);
/// What fixes the level of an emitter whose radiance depends on the direction. `where` names the direction in which its radiance
/// is the one of its spectrum, such as "along the axis".
Parameter directionalQuantity(const std::string& where);
/// Sides of the surface that emit.
Parameter emittingSide();

/// Emitters that are read from files and pictures, and those made of others.
void addMeasuredEmitters(Catalogue& catalogue);

}  // namespace nemra::node
