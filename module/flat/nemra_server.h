/* libnemra: render workers. */
#ifndef NEMRA_FLAT_SERVER_H
#define NEMRA_FLAT_SERVER_H

#include "nemra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*nemra_server_busy_callback)(void* user, bool busy);

/* Caller's handle. */
NEMRA_API nemra_server_t* nemraServerCreate(void);
NEMRA_API void nemraServerRelease(nemra_server_t** handle);
NEMRA_API void nemraServerOpenAsync(nemra_server_t* server, int port);
/* The open port, or 0. */
NEMRA_API int nemraServerOpenBlocking(nemra_server_t* server, int port);
NEMRA_API void nemraServerCloseBlocking(nemra_server_t* server);
NEMRA_API void nemraServerSetBusyChangedCallback(nemra_server_t* server, void* user, nemra_server_busy_callback callback);
NEMRA_API void nemraServerSendMessage(nemra_server_t* server, const char* name, const char* message, int type);
NEMRA_API void nemraServerSetParameter(nemra_server_t* server, const char* name, const char* value);

#ifdef __cplusplus
}
#endif

#endif
