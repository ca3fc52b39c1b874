/// Words that several families share: how a picture lies on a surface, how a quantity is read between samples, how one entry of a
/// list is chosen.
#pragma once

#include "engine/node/catalogue/build.h"

namespace nemra::node {

/// How a picture is laid on a surface: what its coordinates come from, how they are moved, what repeats it and what lies between
/// its pixels.
NEMRA_API std::vector<ParameterSpec> pictureMapping();
/// Choice `interpolation` between the rows of a table.
NEMRA_API Parameter tableInterpolation();
/// Choice `selection` of one entry of the node's list.
NEMRA_API Parameter listSelection();
/// Table `weights` with one row per entry of the node's list, in its order; an entry without a row has weight 1.
NEMRA_API Parameter listWeights(std::string doc);

/// A share or factor that varies over the surface: a scalar shader with that value by default.
NEMRA_API ChildSpec scalarChild(std::string name, double value, std::string doc);
/// A spectrum with the same value at every wavelength by default.
NEMRA_API ChildSpec spectrumChild(std::string name, double value, std::string doc);
/// A filter over the surface; by default it changes nothing.
NEMRA_API ChildSpec filterChild(std::string name, std::string doc);

/// Angle in degrees between a direction and the normal, or around it.
NEMRA_API Parameter angle(std::string name, double defaultDeg, double minimumDeg, double maximumDeg);
/// A share from 0 to 1.
NEMRA_API Parameter share(std::string name, double defaultValue);

}  // namespace nemra::node
