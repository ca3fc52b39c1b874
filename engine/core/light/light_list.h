/// The lights of a scene, for picking one in proportion to its power.
#pragma once

#include <vector>

#include "engine/core/geometry/world.h"

namespace nemra::core {

struct LightList {
    std::vector<LightRecord> lights;
    std::vector<float> below;       ///< cumulative chances, one more than lights
    std::vector<AliasEntry> alias;  ///< for many lights (Walker 1977, Vose 1991)
    bool rare = false;              ///< some are curved shapes or instances
    double power = 0.0;             ///< of all lights, W
    double peakRadiance = 0.0;      ///< largest mean spectral radiance of a light, W/(m2 sr nm)
};

/// Up to this many lights the cumulative chances are searched, and what is left of the random number is used again.
inline constexpr int kSearchedLights = 16;

/// Collects the emissive triangles, shapes and instances, one entry each, and writes their chances back into the world's records.
LightList makeLightList(World& world, const SpectralTables& tables);

/// Spectral radiance of lights and environment together, by cell of the grid, as it weighs in the light of the scene.
std::vector<double> lightByCell(const LightList& lights, const SpectralTables& tables, int environment, double sceneRadius);

}  // namespace nemra::core
