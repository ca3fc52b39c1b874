// Renderers and servers of the recording engine. A test fires the callbacks; each comes from a thread of its own.
#include "module/flat/nemra_renderer.h"

#include "tests/probe/foreign_thread.h"
#include "module/flat/nemra_server.h"
#include "tests/probe/recorder.h"

using probe::call;
using probe::Ready;

namespace {

template <class Function>
struct Slot {
    Function function = nullptr;
    void* user = nullptr;
};

// The slots given last, whichever renderer's.
Slot<nemra_renderer_raw_callback> updateSlot;
Slot<nemra_renderer_raw_callback> finishSlot;
Slot<nemra_renderer_state_callback> stateSlot;
Slot<nemra_renderer_statistics_callback> statisticsSlot;
Slot<nemra_renderer_message_callback> messageSlot;
Slot<nemra_server_busy_callback> busySlot;

template <class Owner, class Function>
void install(const char* function, Owner* owner, void* user, Function callback, Slot<Function>& slot) {
    probe::record(function, owner, user != nullptr, callback != nullptr);
    slot = {callback, user};
}

}  // namespace

extern "C" {

nemra_renderer_t* nemraRendererCreate() {
    auto* renderer = probe::answerOr("nemraRendererCreate", probe::freshHandle<nemra_renderer_t>());
    probe::record("nemraRendererCreate", renderer);
    return renderer;
}
void nemraRendererRelease(nemra_renderer_t** handle) { call<void>("nemraRendererRelease", handle); }
bool nemraRendererStart(nemra_renderer_t* renderer, const char* file) { return call<bool>("nemraRendererStart", renderer, file); }
bool nemraRendererStartData(nemra_renderer_t* renderer, const char* data, unsigned int size) {
    return call<bool>("nemraRendererStartData", renderer, Ready{data ? probe::jsonText(data, size) : "null"}, size);
}
void nemraRendererStop(nemra_renderer_t* renderer) { call<void>("nemraRendererStop", renderer); }
bool nemraRendererTogglePause(nemra_renderer_t* renderer, bool paused) {
    return call<bool>("nemraRendererTogglePause", renderer, paused);
}
void nemraRendererSetParameter(nemra_renderer_t* renderer, const char* name, const char* value) {
    call<void>("nemraRendererSetParameter", renderer, name, value);
}
void nemraRendererSetParameterInt(nemra_renderer_t* renderer, const char* name, int value) {
    call<void>("nemraRendererSetParameterInt", renderer, name, value);
}
void nemraRendererSetHaltCondition(nemra_renderer_t* renderer, double time, double spp, nemra_renderer_halt_cond_t action) {
    call<void>("nemraRendererSetHaltCondition", renderer, time, spp, action);
}
void nemraRendererClearNodes(nemra_renderer_t* renderer) { call<void>("nemraRendererClearNodes", renderer); }
void nemraRendererAddLocalNode(nemra_renderer_t* renderer) { call<void>("nemraRendererAddLocalNode", renderer); }
void nemraRendererAddRemoteNode(nemra_renderer_t* renderer) { call<void>("nemraRendererAddRemoteNode", renderer); }
void nemraRendererUpdateRaw(nemra_renderer_t* renderer) { call<void>("nemraRendererUpdateRaw", renderer); }
double nemraRendererGetStatistic(nemra_renderer_t* renderer, nemra_renderer_stat_t type) {
    return call<double>("nemraRendererGetStatistic", renderer, type);
}

void nemraRendererSetUpdateCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_raw_callback callback) {
    install("nemraRendererSetUpdateCallback", renderer, user, callback, updateSlot);
}
void nemraRendererSetStateChangedCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_state_callback callback) {
    install("nemraRendererSetStateChangedCallback", renderer, user, callback, stateSlot);
}
void nemraRendererSetFinishedCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_raw_callback callback) {
    install("nemraRendererSetFinishedCallback", renderer, user, callback, finishSlot);
}
void nemraRendererSetStatisticsCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_statistics_callback callback) {
    install("nemraRendererSetStatisticsCallback", renderer, user, callback, statisticsSlot);
}
void nemraRendererSetMessageCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_message_callback callback) {
    install("nemraRendererSetMessageCallback", renderer, user, callback, messageSlot);
}

nemra_server_t* nemraServerCreate() {
    auto* server = probe::answerOr("nemraServerCreate", probe::freshHandle<nemra_server_t>());
    probe::record("nemraServerCreate", server);
    return server;
}
void nemraServerRelease(nemra_server_t** handle) { call<void>("nemraServerRelease", handle); }
void nemraServerOpenAsync(nemra_server_t* server, int port) { call<void>("nemraServerOpenAsync", server, port); }
int nemraServerOpenBlocking(nemra_server_t* server, int port) { return call<int>("nemraServerOpenBlocking", server, port); }
void nemraServerCloseBlocking(nemra_server_t* server) { call<void>("nemraServerCloseBlocking", server); }
void nemraServerSetBusyChangedCallback(nemra_server_t* server, void* user, nemra_server_busy_callback callback) {
    install("nemraServerSetBusyChangedCallback", server, user, callback, busySlot);
}
void nemraServerSendMessage(nemra_server_t* server, const char* name, const char* message, int type) {
    call<void>("nemraServerSendMessage", server, name, message, type);
}
void nemraServerSetParameter(nemra_server_t* server, const char* name, const char* value) {
    call<void>("nemraServerSetParameter", server, name, value);
}

// What tests fire by; "" or what left the callback. `withUser` false passes no user pointer.
PROBE_API const char* probeUpdate(uint64_t raw, bool withUser) {
    return probe::onForeignThread([=] { updateSlot.function(withUser ? updateSlot.user : nullptr, reinterpret_cast<nemra_raw_t*>(raw)); });
}
PROBE_API const char* probeFinish(uint64_t raw, bool withUser) {
    return probe::onForeignThread([=] { finishSlot.function(withUser ? finishSlot.user : nullptr, reinterpret_cast<nemra_raw_t*>(raw)); });
}
PROBE_API const char* probeState(int state, bool withUser) {
    return probe::onForeignThread(
        [=] { stateSlot.function(withUser ? stateSlot.user : nullptr, static_cast<NemraRendererState_t>(state)); });
}
PROBE_API const char* probeStatistics(bool withUser) {
    return probe::onForeignThread([=] { statisticsSlot.function(withUser ? statisticsSlot.user : nullptr); });
}
PROBE_API const char* probeMessage(const char* source, const char* message, int level, bool withUser) {
    return probe::onForeignThread([=] {
        messageSlot.function(withUser ? messageSlot.user : nullptr, source, message, static_cast<LogLevel_t>(level));
    });
}
PROBE_API const char* probeBusy(bool busy, bool withUser) {
    return probe::onForeignThread([=] { busySlot.function(withUser ? busySlot.user : nullptr, busy); });
}

}  // extern "C"
