/// The one place where the module records an engine handle and decides whether it may give it back.
#pragma once

#include <cstdint>
#include <utility>

#include "module/flat/nemra_node.h"
#include "module/flat/nemra_raw.h"
#include "module/flat/nemra_renderer.h"
#include "module/flat/nemra_scene.h"
#include "module/flat/nemra_server.h"

namespace Nemra {

/// Engine function that gives a handle of type T back; takes the address of the handle field.
inline void releaseHandle(nemra_raw_t** handle) { nemraRawRelease(handle); }
inline void releaseHandle(nemra_server_t** handle) { nemraServerRelease(handle); }
inline void releaseHandle(nemra_renderer_t** handle) { nemraRendererRelease(handle); }
inline void releaseHandle(nemra_onode_t** handle) { nemraNode_release(handle); }
inline void releaseHandle(nemra_instance_t** handle) { nemraInstance_release(handle); }
inline void releaseHandle(nemra_scene_t** handle) { nemraScene_release(handle); }
inline void releaseHandle(nemra_geom_t** handle) { nemraGeometry_release(handle); }

/// Wrapper of one engine handle. `borrowed` is true by default: the engine keeps the object. A wrapper owns its handle only
/// after an explicit takeOwnership(); a copy never owns; a move takes both fields over and leaves a deleted, borrowed source.
template <class T>
class CHandler {
public:
    CHandler() = default;
    explicit CHandler(T* engineHandle) : handle(engineHandle) {}
    CHandler(const CHandler& other) : handle(other.handle) {}
    CHandler(CHandler&& other) noexcept
        : handle(std::exchange(other.handle, nullptr)), borrowed(std::exchange(other.borrowed, true)) {}
    CHandler& operator=(const CHandler&) = delete;
    CHandler& operator=(CHandler&&) = delete;
    ~CHandler() {
        if (!borrowed && handle) releaseHandle(&handle);
    }

    /// The one place where `borrowed` is cleared.
    void takeOwnership() { borrowed = false; }

    /// Low 32 bits of the handle with their sign, as scripts see it.
    std::int32_t lowBits() const { return static_cast<std::int32_t>(reinterpret_cast<std::uintptr_t>(handle)); }

    T* handle = nullptr;
    bool borrowed = true;
};

}  // namespace Nemra
