/* libnemra: render jobs.
 *
 * Callbacks come from one thread of the engine's per renderer, never from a render thread and never from inside a call of this
 * interface. States, messages and the finish come in order and are never lost; updates and statistics are coalesced. */
#ifndef NEMRA_FLAT_RENDERER_H
#define NEMRA_FLAT_RENDERER_H

#include "nemra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*nemra_renderer_raw_callback)(void* user, nemra_raw_t* raw);
typedef void (*nemra_renderer_state_callback)(void* user, NemraRendererState_t state);
typedef void (*nemra_renderer_statistics_callback)(void* user);
typedef void (*nemra_renderer_message_callback)(void* user, const char* source, const char* message, LogLevel_t level);

/* Caller's handle. */
NEMRA_API nemra_renderer_t* nemraRendererCreate(void);
/* Gives the renderer back and clears the field. Returns at once, also while it renders: the job is cancelled, no new callback
 * starts after the return, and the raws that its callbacks received are stale. */
NEMRA_API void nemraRendererRelease(nemra_renderer_t** handle);

NEMRA_API bool nemraRendererStart(nemra_renderer_t* renderer, const char* file_name);
/* `size` bytes of an svxml or svbin scene, copied. */
NEMRA_API bool nemraRendererStartData(nemra_renderer_t* renderer, const char* data, unsigned int size);
/* Asks for a stop and returns at once. */
NEMRA_API void nemraRendererStop(nemra_renderer_t* renderer);
/* True pauses, false resumes. False if that isn't possible. */
NEMRA_API bool nemraRendererTogglePause(nemra_renderer_t* renderer, bool paused);

NEMRA_API void nemraRendererSetParameter(nemra_renderer_t* renderer, const char* name, const char* value);
NEMRA_API void nemraRendererSetParameterInt(nemra_renderer_t* renderer, const char* name, int value);
/* time in s, spp in samples per pixel; zero or below disables the condition. Before or during a render. */
NEMRA_API void nemraRendererSetHaltCondition(nemra_renderer_t* renderer, double time, double spp,
                                             nemra_renderer_halt_cond_t action);
NEMRA_API void nemraRendererClearNodes(nemra_renderer_t* renderer);
/* These take the parameters set so far and take effect at the next start. */
NEMRA_API void nemraRendererAddLocalNode(nemra_renderer_t* renderer);
NEMRA_API void nemraRendererAddRemoteNode(nemra_renderer_t* renderer);

NEMRA_API void nemraRendererUpdateRaw(nemra_renderer_t* renderer);
NEMRA_API double nemraRendererGetStatistic(nemra_renderer_t* renderer, nemra_renderer_stat_t type);

/* A raw given to a callback is the renderer's; copy it to keep it. */
NEMRA_API void nemraRendererSetUpdateCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_raw_callback callback);
NEMRA_API void nemraRendererSetStateChangedCallback(nemra_renderer_t* renderer, void* user,
                                                    nemra_renderer_state_callback callback);
NEMRA_API void nemraRendererSetFinishedCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_raw_callback callback);
NEMRA_API void nemraRendererSetStatisticsCallback(nemra_renderer_t* renderer, void* user,
                                                  nemra_renderer_statistics_callback callback);
NEMRA_API void nemraRendererSetMessageCallback(nemra_renderer_t* renderer, void* user, nemra_renderer_message_callback callback);

#ifdef __cplusplus
}
#endif

#endif
