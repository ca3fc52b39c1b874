// nemraServer*: render workers.
#include "engine/core/worker/server.h"

#include <memory>

#include "engine/common/guarded.h"
#include "engine/common/slot_table.h"
#include "engine/common/text.h"
#include "module/flat/nemra_server.h"

using namespace nemra;
using core::worker::Server;

namespace {

/// The server of a handle, or null for a null, stale or foreign one, and for one that a fork has left without its threads.
std::shared_ptr<Server> known(nemra_server_t* handle) {
    auto server = find<Server>(handle);
    return server && !server->isForeign() ? server : nullptr;
}

template <class Body>
void with(const char* function, nemra_server_t* handle, Body&& body) {
    guarded(function, [&] {
        if (const auto server = known(handle)) body(*server);
    });
}

}  // namespace

extern "C" {

nemra_server_t* nemraServerCreate(void) {
    return guarded<nemra_server_t*>("nemraServerCreate", nullptr,
                                    [] { return publish<nemra_server_t>(std::make_shared<Server>()); });
}

void nemraServerRelease(nemra_server_t** handle) {
    guarded("nemraServerRelease", [&] {
        if (!handle) return;
        const auto server = find<Server>(*handle);
        retire(handle);
        // At once, not when the last reference goes: its threads hold some.
        if (server) server->release();
    });
}

void nemraServerOpenAsync(nemra_server_t* server, int port) {
    with("nemraServerOpenAsync", server, [&](Server& s) { s.openAsync(port); });
}

int nemraServerOpenBlocking(nemra_server_t* server, int port) {
    return guarded("nemraServerOpenBlocking", 0, [&] {
        const auto s = known(server);
        return s ? s->open(port) : 0;
    });
}

void nemraServerCloseBlocking(nemra_server_t* server) {
    with("nemraServerCloseBlocking", server, [](Server& s) { s.close(); });
}

void nemraServerSetBusyChangedCallback(nemra_server_t* server, void* user, nemra_server_busy_callback callback) {
    with("nemraServerSetBusyChangedCallback", server, [&](Server& s) { s.callbacks().setBusy(user, callback); });
}

void nemraServerSendMessage(nemra_server_t* server, const char* name, const char* message, int type) {
    with("nemraServerSendMessage", server, [&](Server& s) { s.sendMessage(viewOf(name), viewOf(message), type); });
}

void nemraServerSetParameter(nemra_server_t* server, const char* name, const char* value) {
    with("nemraServerSetParameter", server, [&](Server& s) { s.setParameter(viewOf(name), viewOf(value)); });
}

}  // extern "C"
