#include <stdexcept>
#include <string>

#include "engine/common/log.h"
#include "engine/core/embree/handles.h"

namespace nemra::core::embree {

namespace {

std::atomic<std::ptrdiff_t> heldBytes{0};

bool countMemory(void*, ssize_t bytes, bool) {
    heldBytes.fetch_add(bytes, std::memory_order_relaxed);
    return true;
}

RTCDevice makeDevice() {
    const RTCDevice made = rtcNewDevice(nullptr);
    if (!made) throw std::runtime_error("Embree gives no device (error " + std::to_string(rtcGetDeviceError(nullptr)) + ")");
    rtcSetDeviceErrorFunction(
        made, [](void*, RTCError, const char* text) { log::warning("Embree", text ? text : "unknown fault"); }, nullptr);
    rtcSetDeviceMemoryMonitorFunction(made, &countMemory, nullptr);
    return made;
}

}  // namespace

RTCDevice device() {
    static const RTCDevice made = makeDevice();
    return made;
}

std::size_t bytesInUse() noexcept {
    const std::ptrdiff_t bytes = heldBytes.load(std::memory_order_relaxed);
    return bytes > 0 ? static_cast<std::size_t>(bytes) : 0;
}

}  // namespace nemra::core::embree
