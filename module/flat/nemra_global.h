/* libnemra: the engine as a whole. */
#ifndef NEMRA_FLAT_GLOBAL_H
#define NEMRA_FLAT_GLOBAL_H

#include "nemra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*nemra_log_callback)(void* user, const char* message, LogLevel_t level);

/* Starts the engine; called again, it only changes the OpenCL settings. The heavy image filters run on the device of that name,
   on the first one for an empty name; without support, or if it isn't there, on the processor. False if the wanted device isn't
   there. */
NEMRA_API bool nemraGlobalInitialize(bool ocl_support, const char* ocl_device);
/* Product, year and release, then in brackets three dotted numbers, a hyphen and twelve hexadecimal digits of the source
 * version. Engine's text, never null. */
NEMRA_API const char* nemraGlobalGetVersionString(void);
/* Folder against which relative file names are read: the process's own until it is set. Engine's text, never null. */
NEMRA_API const char* nemraGlobalGetWorkdir(void);
NEMRA_API bool nemraGlobalSetWorkdir(const char* directory);
/* Installs a sink for all messages. The same callback given again replaces itself; `text` is kept for later use. */
NEMRA_API void addNemraLogMessageCallbackSink(nemra_log_callback callback, void* user, const char* text);
/* Names of the OpenCL devices, separated by '|'; empty without devices. Caller's text, never null. */
NEMRA_API char* pyNemraGlobalListOpenCLDevices(void);

/* Beyond the fixed interface, optional for an engine: stops new callbacks and waits for those in flight, at most timeoutMs.
 * The host calls it at its exit without its interpreter lock. True if none is in flight any more. There is no way back. */
NEMRA_API bool nemraGlobalCloseCallbacks(int timeoutMs);

/* Beyond the fixed interface too: the host's own lock. The engine then takes it before it looks whether a renderer is still there
 * and gives it back after the callback, so that a host that gives objects back under its lock never meets a callback on its way
 * to one that is gone. acquire may be called by a thread that holds the lock, and its result goes to release. Once, before the
 * first callback. */
NEMRA_API void nemraGlobalSetHostLock(int (*acquire)(void), void (*release)(int));

#ifdef __cplusplus
}
#endif

#endif
