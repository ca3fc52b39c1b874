/// How a surface scatters light.
#pragma once

#include <memory>
#include <vector>

#include "engine/core/kernel/kernel_scene.h"
#include "engine/core/spectrum/grid.h"

namespace nemra::core {

/// A path that has come to a surface, as a Bsdf sees it. Directions are unit vectors away from the surface; both normals stand on
/// the side of `wo`.
struct ScatterQuery {
    float wo[3];
    float normal[3];     ///< shading normal
    float geometric[3];  ///< normal of the surface itself
    const SpectralCell* spectra;
    const std::int32_t* cells;  ///< the path's wavelengths: cells of the grid and positions in them
    const float* inCell;
    int wavelengths;
    float u[3];  ///< random numbers
};

struct Scattering {
    enum class Kind {
        absorbed,
        passes,  ///< goes on as if nothing were there
        delta,   ///< into a direction that no light sampling could have picked
    };
    Kind kind = Kind::absorbed;
    float wi[3] = {0.0F, 0.0F, 1.0F};
    float weight[8] = {};  ///< by wavelength: scattered over incident radiance, over the chance of this event
};

/// Immutable, asked by all threads.
class Bsdf {
public:
    virtual ~Bsdf() = default;
    virtual void sample(const ScatterQuery& query, Scattering& result) const = 0;
};

/// What a bsdf node becomes: one of the kinds that the kernels know, or an object that they ask.
struct BsdfModel {
    SurfaceKind kind = SurfaceKind::black;
    int reflectance = -1;  ///< table of a diffuse reflector
    std::unique_ptr<Bsdf> object;
    bool passesAll = false;  ///< light goes straight through, unchanged
};

using MakeBsdf = BsdfModel (*)(const node::Node& node, Translation& translation, SpectralTables& tables);
ClassTable<MakeBsdf>& bsdfClasses();
BsdfModel makeBsdf(const NodePointer& node, Translation& translation, SpectralTables& tables);

/// A reflectance baked; with one warning it is brought into [0, 1] where it lies outside.
int bakeReflectance(const NodePointer& spectrum, const node::Node& owner, Translation& translation, SpectralTables& tables);

}  // namespace nemra::core
