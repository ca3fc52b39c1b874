/// What rays are traced against: flat lists of planes for small scenes, Embree scenes for others.
#pragma once

#include <vector>

#include "engine/core/geometry/world.h"

namespace nemra::core {

/// Scenes of at most this many triangles, and nothing else, are tested plane by plane.
inline constexpr std::size_t kFlatLimit = 96;

class TraceScenes {
public:
    /// The world must stay where it is for as long as this lives.
    TraceScenes(World& world, std::size_t flatLimit);

    /// Fills in what the kernels trace. The pointers are good as long as this lives.
    void connect(KernelScene& scene) const;
    std::size_t memory() const noexcept { return bytes_; }

private:
    struct Target {
        std::vector<FlatPlane> planes;
        std::vector<FlatTriangle> flat;
        std::vector<std::uint32_t> ids;
        embree::Scene scene;
    };

    void makeFlat(const World& world);
    void makeEmbree(World& world);
    TraceTarget view(int target) const;

    Target targets_[3];       ///< camera, path, shadow
    int use_[3] = {0, 1, 2};  ///< which of them stands for each: equal ones are made once
    std::size_t bytes_ = 0;
};

}  // namespace nemra::core
