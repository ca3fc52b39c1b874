// The script and the record of calls, and how a test reaches them through ctypes.
#include <cxxabi.h>

#include <exception>
#include <map>
#include <mutex>
#include <thread>

#include "module/flat/nemra_common.h"
#include "module/flat/nemra_global.h"
#include "module/flat/nemra_renderer.h"
#include "module/flat/nemra_server.h"
#include "tests/probe/probe.h"

namespace {

struct Callback {
    void* function;
    void* user;
};

// Never destroyed: the module's objects may still call at exit.
auto& lock = *new std::mutex;
auto& answers = *new std::map<std::string, std::string>;
auto& calls = *new std::vector<std::string>;
auto& callbacks = *new std::map<std::string, Callback>;

/// With the user pointer that came with it, or, if the test wants so, without.
Callback find(const char* setter) {
    const std::lock_guard guard(lock);
    Callback callback = callbacks[setter];
    if (answers.contains("no user pointer")) callback.user = nullptr;
    return callback;
}

/// Calls on this thread or on one that Python has never seen, and tells what left the callback: an empty text if nothing did.
/// ctypes gives the interpreter lock up during the call, so that a foreign thread can take it. Good until the next firing.
template <class Body>
const char* onThread(bool foreign, Body body) {
    static auto& outcome = *new std::string;
    outcome.clear();
    const auto caught = [&] {
        try {
            body();
        } catch (const abi::__forced_unwind&) {
            throw;  // the interpreter is ending this thread
        } catch (const std::exception& e) {
            outcome = e.what();
        }
    };
    if (foreign) {
        std::thread(caught).join();
    } else {
        caught();
    }
    return outcome.c_str();
}

}  // namespace

namespace probe {

std::optional<std::string> record(const std::string& function, const std::string& call) {
    const std::lock_guard guard(lock);
    calls.push_back(call);
    if (auto once = answers.extract("once " + call)) return once.mapped();
    for (const std::string& key : {call, function}) {
        if (const auto found = answers.find(key); found != answers.end()) return found->second;
    }
    return std::nullopt;
}

std::optional<std::string> answerTo(const std::string& question) {
    const std::lock_guard guard(lock);
    const auto found = answers.find(question);
    return found == answers.end() ? std::nullopt : std::optional(found->second);
}

void keepCallback(const std::string& function, void* callback, void* user) {
    const std::lock_guard guard(lock);
    callbacks[function] = {callback, user};
}

}  // namespace probe

extern "C" {

PROBE_API void freeCharArray(char* text) {
    probe::record("freeCharArray", "freeCharArray(" + probe::show(static_cast<const char*>(text)) + ")");
    std::free(text);
}

/// The answer may hold zero bytes.
PROBE_API void probeAnswer(const char* call, const char* answer, int size) {
    const std::lock_guard guard(lock);
    answers[call] = std::string(answer, static_cast<std::size_t>(size));
}

PROBE_API int probeCallCount() {
    const std::lock_guard guard(lock);
    return static_cast<int>(calls.size());
}

/// Good until the next call is recorded or forgotten. Copies at most `capacity` bytes and returns the length.
PROBE_API int probeCall(int index, char* buffer, int capacity) {
    const std::lock_guard guard(lock);
    const std::string& call = calls[static_cast<std::size_t>(index)];
    std::memcpy(buffer, call.data(), std::min(call.size(), static_cast<std::size_t>(capacity)));
    return static_cast<int>(call.size());
}

/// Forgets one answer, or all of them for an empty text.
PROBE_API void probeForgetAnswer(const char* call) {
    const std::lock_guard guard(lock);
    if (*call) {
        answers.erase(call);
    } else {
        answers.clear();
    }
}

PROBE_API void probeForgetCalls() {
    const std::lock_guard guard(lock);
    calls.clear();
}

PROBE_API const char* probeFireLog(const char* message, int level, bool foreign) {
    const Callback sink = find("addNemraLogMessageCallbackSink");
    return onThread(foreign, [&] {
        reinterpret_cast<nemra_log_callback>(sink.function)(sink.user, message, static_cast<LogLevel_t>(level));
    });
}

PROBE_API const char* probeFireRaw(const char* setter, std::uint64_t raw, bool foreign) {
    const Callback callback = find(setter);
    return onThread(foreign, [&] {
        reinterpret_cast<nemra_renderer_raw_callback>(callback.function)(callback.user, reinterpret_cast<nemra_raw_t*>(raw));
    });
}

PROBE_API const char* probeFireState(int state, bool foreign) {
    const Callback callback = find("nemraRendererSetStateChangedCallback");
    return onThread(foreign, [&] {
        reinterpret_cast<nemra_renderer_state_callback>(callback.function)(callback.user,
                                                                           static_cast<NemraRendererState_t>(state));
    });
}

PROBE_API const char* probeFireStatistics(bool foreign) {
    const Callback callback = find("nemraRendererSetStatisticsCallback");
    return onThread(foreign, [&] { reinterpret_cast<nemra_renderer_statistics_callback>(callback.function)(callback.user); });
}

PROBE_API const char* probeFireMessage(const char* source, const char* message, int level, bool foreign) {
    const Callback callback = find("nemraRendererSetMessageCallback");
    return onThread(foreign, [&] {
        reinterpret_cast<nemra_renderer_message_callback>(callback.function)(callback.user, source, message,
                                                                             static_cast<LogLevel_t>(level));
    });
}

PROBE_API const char* probeFireBusy(bool busy, bool foreign) {
    const Callback callback = find("nemraServerSetBusyChangedCallback");
    return onThread(foreign, [&] { reinterpret_cast<nemra_server_busy_callback>(callback.function)(callback.user, busy); });
}

}  // extern "C"
