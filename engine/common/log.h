/// Messages of the engine. Every fault, warning and piece of information that a user may want goes through here.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "module/flat/nemra_types.h"

namespace nemra::log {

/// `source` says who speaks: a node path such as "material/generic white/bsdf", a file, or a function of the interface.
struct Message {
    LogLevel_t level;
    std::string source;
    std::string text;
};

/// Sends a message to this thread's innermost Capture, else to the sinks that the host has installed, from this thread; a warning
/// or an error that neither takes goes to the standard error.
/// Never throws, never holds a lock while a sink runs.
NEMRA_API void emit(LogLevel_t level, std::string_view source, std::string_view text);

inline void error(std::string_view source, std::string_view text) { emit(NEMRA_LOG_ERROR, source, text); }
inline void warning(std::string_view source, std::string_view text) { emit(NEMRA_LOG_WARNING, source, text); }
inline void info(std::string_view source, std::string_view text) { emit(NEMRA_LOG_INFO, source, text); }
inline void debug(std::string_view source, std::string_view text) { emit(NEMRA_LOG_DEBUG, source, text); }

/// While it lives, messages that this thread emits go to `sink` and nowhere else.
class NEMRA_API Capture {
public:
    explicit Capture(std::function<void(const Message&)> sink);
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

private:
    friend void emit(LogLevel_t, std::string_view, std::string_view);
    std::function<void(const Message&)> sink_;
    Capture* outer_;
};

/// Gives a message to the host's global sinks, on this thread, whatever Capture is active. False if none of them took it: there
/// is none, they have nothing to call in them (std::bad_function_call), they threw, or the host is closing down. The first time
/// that a sink throws what it threw is printed.
NEMRA_API bool deliverToHost(const Message& message);

/// Has the host ever installed a sink?
NEMRA_API bool hasHostSink();
/// For what nobody else would hear: a warning or an error as one line on the standard error, at once; other levels are dropped.
NEMRA_API void print(const Message& message);

using HostSink = void (*)(void* user, const char* message, LogLevel_t level);
/// Installs a sink; the same function and user pointer given again replaces itself.
NEMRA_API void addHostSink(HostSink sink, void* user, std::string_view text);

}  // namespace nemra::log
