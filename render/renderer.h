/// A render job, as scripts see it.
#pragma once

#include <functional>
#include <string>

#include "module/binding.h"
#include "module/handle.h"
#include "results/raw.h"

namespace Nemra {

/// One engine renderer, owned by this wrapper. The engine knows the wrapper's address as the user pointer of its callbacks, so
/// a renderer is neither copied nor moved.
class NemraRenderer : public CHandler<nemra_renderer_t> {
public:
    using RawCallback = std::function<void(NemraRaw)>;
    using StateCallback = std::function<void(NemraRendererState_t)>;
    using StatisticsCallback = std::function<void()>;
    using MessageCallback = std::function<void(const std::string&, const std::string&, LogLevel_t)>;

    NemraRenderer();
    /// Empties the slots, each before its callable goes, and only then gives the handle back: a callable whose end gives up the
    /// interpreter lock lets engine threads in, which must find slots that stand.
    ~NemraRenderer();
    NemraRenderer(const NemraRenderer&) = delete;

    // Each forwards to one engine function; texts may be null.
    void stop() const { nemraRendererStop(handle); }
    void setParameter(const char* name, const char* value) const { nemraRendererSetParameter(handle, name, value); }
    void setParameterInt(const char* name, int value) const { nemraRendererSetParameterInt(handle, name, value); }
    void setHaltCondition(double time, double spp, nemra_renderer_halt_cond_t action) const {
        nemraRendererSetHaltCondition(handle, time, spp, action);
    }
    bool togglePause(bool paused) const { return nemraRendererTogglePause(handle, paused); }
    void clearNodes() const { nemraRendererClearNodes(handle); }
    void addLocalNode() const { nemraRendererAddLocalNode(handle); }
    void addRemoteNode() const { nemraRendererAddRemoteNode(handle); }
    bool start(const char* fileName) const { return nemraRendererStart(handle, fileName); }
    bool startData(const char* data, unsigned int size) const { return nemraRendererStartData(handle, data, size); }
    void updateRaw() const { nemraRendererUpdateRaw(handle); }
    double getStatistic(nemra_renderer_stat_t type) const { return nemraRendererGetStatistic(handle, type); }

    // Each replaces the callable in its slot, then gives the engine the slot's trampoline. An empty function empties the slot;
    // the engine then still calls the trampoline, which throws std::bad_function_call.
    void onChange(const StateCallback& callback);
    void onUpdate(const RawCallback& callback);
    void onFinish(const RawCallback& callback);
    void onStatisticsUpdate(const StatisticsCallback& callback);
    void onMessage(const MessageCallback& callback);

private:
    // Trampolines: entered on engine threads without the interpreter lock, which the function in the slot takes by itself.
    // What the function throws passes through into the engine.
    static void updated(void* user, nemra_raw_t* raw);
    static void changed(void* user, NemraRendererState_t state);
    static void finished(void* user, nemra_raw_t* raw);
    static void statisticsUpdated(void* user);
    static void messageSent(void* user, const char* source, const char* message, LogLevel_t level);

    RawCallback update_;
    StateCallback change_;
    RawCallback finish_;
    StatisticsCallback statistics_;
    MessageCallback message_;
};

}  // namespace Nemra
