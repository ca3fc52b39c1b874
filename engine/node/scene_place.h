/// Where an object stands in a scene that scripts change.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nemra::node {

class SceneObject;

/// Kept with the object by the scene that has it. A copy of the object stands nowhere.
struct ScenePlace {
    SceneObject* scene = nullptr;
    std::size_t position = 0;  ///< in its list
    std::uint64_t handle = 0;  ///< of a geometry or an instance; 0 before it is asked for

    ScenePlace() = default;
    ScenePlace(const ScenePlace&) noexcept {}
    ScenePlace& operator=(const ScenePlace&) noexcept { return *this; }
    void set(SceneObject* in, std::size_t at) noexcept {
        scene = in;
        position = at;
    }
};

}  // namespace nemra::node
