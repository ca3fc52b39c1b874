/// Ownership of Embree objects.
#pragma once

#include <atomic>
#include <memory>
#include <type_traits>

#include "engine/core/embree/embree.h"

namespace nemra::core::embree {

struct ReleaseDevice {
    void operator()(RTCDevice device) const noexcept { rtcReleaseDevice(device); }
};
struct ReleaseScene {
    void operator()(RTCScene scene) const noexcept { rtcReleaseScene(scene); }
};
struct ReleaseGeometry {
    void operator()(RTCGeometry geometry) const noexcept { rtcReleaseGeometry(geometry); }
};
using Device = std::unique_ptr<std::remove_pointer_t<RTCDevice>, ReleaseDevice>;
using Scene = std::unique_ptr<std::remove_pointer_t<RTCScene>, ReleaseScene>;
using Geometry = std::unique_ptr<std::remove_pointer_t<RTCGeometry>, ReleaseGeometry>;

/// The process's device, made at first use and never destroyed (its threads must outlive static destruction). Throws
/// std::runtime_error if there is none.
RTCDevice device();

/// Bytes that Embree holds, over all scenes of the process.
std::size_t bytesInUse() noexcept;

}  // namespace nemra::core::embree
