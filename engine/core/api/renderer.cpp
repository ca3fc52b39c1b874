// nemraRenderer*: render jobs.
#include "engine/core/job/renderer.h"

#include <memory>
#include <string>

#include "engine/common/guarded.h"
#include "engine/common/slot_table.h"
#include "engine/common/text.h"
#include "engine/common/workdir.h"
#include "engine/core/api/raw_handle.h"
#include "engine/core/job/load_scene.h"
#include "module/flat/nemra_renderer.h"

using namespace nemra;
using core::Renderer;

namespace {

/// The renderer of a handle, or null for a null, stale or foreign one, and for one that a fork has left without its threads.
std::shared_ptr<Renderer> known(nemra_renderer_t* handle) {
    auto renderer = find<Renderer>(handle);
    return renderer && !renderer->isForeign() ? renderer : nullptr;
}

template <class Body>
void with(const char* function, nemra_renderer_t* handle, Body&& body) {
    guarded(function, [&] {
        if (const auto renderer = known(handle)) body(*renderer);
    });
}

bool start(const char* function, nemra_renderer_t* handle, const Renderer::Loader& load) {
    return guarded(function, false, [&] {
        const auto renderer = find<Renderer>(handle);
        if (!renderer) return false;
        if (renderer->isForeign()) {
            log::error(function, "this renderer was made before the process was forked: make a new one");
            return false;
        }
        return renderer->start(load);
    });
}

}  // namespace

extern "C" {

nemra_renderer_t* nemraRendererCreate(void) {
    return guarded<nemra_renderer_t*>("nemraRendererCreate", nullptr,
                                      [] { return publish<nemra_renderer_t>(std::make_shared<Renderer>()); });
}

void nemraRendererRelease(nemra_renderer_t** handle) {
    guarded("nemraRendererRelease", [&] {
        if (!handle) return;
        const auto renderer = find<Renderer>(*handle);
        retire(handle);
        // At once, not when the last reference goes: another thread may just be using the renderer.
        if (renderer) renderer->release();
        core::rawChanged();
    });
}

bool nemraRendererStart(nemra_renderer_t* renderer, const char* file_name) {
    return start("nemraRendererStart", renderer,
                 [&](const core::Settings& settings, core::RenderPlaces places) -> core::LoadedScene {
                     const std::string name(viewOf(file_name));
                     if (name.empty()) {
                         log::error("nemraRendererStart", "no scene file is named");
                         return {};
                     }
                     return core::loadSceneFile(resolvePath(name), settings, places);
                 });
}

bool nemraRendererStartData(nemra_renderer_t* renderer, const char* data, unsigned int size) {
    return start("nemraRendererStartData", renderer,
                 [&](const core::Settings& settings, core::RenderPlaces places) -> core::LoadedScene {
                     if (!data || size == 0) {
                         log::error("nemraRendererStartData", "the scene buffer is empty");
                         return {};
                     }
                     return core::loadSceneBytes({data, size}, settings, places);
                 });
}

void nemraRendererStop(nemra_renderer_t* renderer) {
    with("nemraRendererStop", renderer, [](Renderer& r) { r.stop(); });
}

bool nemraRendererTogglePause(nemra_renderer_t* renderer, bool paused) {
    return guarded("nemraRendererTogglePause", false, [&] {
        const auto r = known(renderer);
        return r && r->setPaused(paused);
    });
}

void nemraRendererSetParameter(nemra_renderer_t* renderer, const char* name, const char* value) {
    with("nemraRendererSetParameter", renderer, [&](Renderer& r) { r.setParameter(viewOf(name), viewOf(value)); });
}

void nemraRendererSetParameterInt(nemra_renderer_t* renderer, const char* name, int value) {
    with("nemraRendererSetParameterInt", renderer, [&](Renderer& r) { r.setParameter(viewOf(name), std::to_string(value)); });
}

void nemraRendererSetHaltCondition(nemra_renderer_t* renderer, double time, double spp, nemra_renderer_halt_cond_t action) {
    with("nemraRendererSetHaltCondition", renderer, [&](Renderer& r) { r.setHalt({time, spp, action}); });
}

void nemraRendererClearNodes(nemra_renderer_t* renderer) {
    with("nemraRendererClearNodes", renderer, [](Renderer& r) { r.clearNodes(); });
}

void nemraRendererAddLocalNode(nemra_renderer_t* renderer) {
    with("nemraRendererAddLocalNode", renderer, [](Renderer& r) { r.addLocalNode(); });
}

void nemraRendererAddRemoteNode(nemra_renderer_t* renderer) {
    with("nemraRendererAddRemoteNode", renderer, [](Renderer& r) { r.addRemoteNode(); });
}

void nemraRendererUpdateRaw(nemra_renderer_t* renderer) {
    with("nemraRendererUpdateRaw", renderer, [](Renderer& r) { r.updateRaw(); });
}

double nemraRendererGetStatistic(nemra_renderer_t* renderer, nemra_renderer_stat_t type) {
    return guarded("nemraRendererGetStatistic", 0.0, [&] {
        const auto r = known(renderer);
        return r ? r->statistic(type) : 0.0;
    });
}

void nemraRendererSetUpdateCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_raw_callback callback) {
    with("nemraRendererSetUpdateCallback", renderer, [&](Renderer& r) { r.callbacks().setUpdate(user, callback); });
}

void nemraRendererSetStateChangedCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_state_callback callback) {
    with("nemraRendererSetStateChangedCallback", renderer, [&](Renderer& r) { r.callbacks().setState(user, callback); });
}

void nemraRendererSetFinishedCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_raw_callback callback) {
    with("nemraRendererSetFinishedCallback", renderer, [&](Renderer& r) { r.callbacks().setFinish(user, callback); });
}

void nemraRendererSetStatisticsCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_statistics_callback callback) {
    with("nemraRendererSetStatisticsCallback", renderer, [&](Renderer& r) { r.callbacks().setStatistics(user, callback); });
}

void nemraRendererSetMessageCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_message_callback callback) {
    with("nemraRendererSetMessageCallback", renderer, [&](Renderer& r) { r.callbacks().setMessage(user, callback); });
}

}  // extern "C"
