// nemraServer*: render workers. There is no network yet; the object, its parameters and its callback are here so that scripts
// that make one run, and are told what is missing when they open it.
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "engine/common/guarded.h"
#include "engine/common/slot_table.h"
#include "engine/common/text.h"
#include "module/flat/nemra_server.h"

using namespace nemra;

namespace {

struct Server {
    std::mutex mutex;
    std::map<std::string, std::string, std::less<>> parameters;
    void* user = nullptr;
    nemra_server_busy_callback busyChanged = nullptr;
};

void sayMissing(const char* function) { log::error(function, "render workers are not available yet"); }

}  // namespace

extern "C" {

nemra_server_t* nemraServerCreate(void) {
    return guarded<nemra_server_t*>("nemraServerCreate", nullptr,
                                    [] { return publish<nemra_server_t>(std::make_shared<Server>()); });
}

void nemraServerRelease(nemra_server_t** handle) {
    guarded("nemraServerRelease", [&] { retire(handle); });
}

void nemraServerOpenAsync(nemra_server_t* server, int) {
    guarded("nemraServerOpenAsync", [&] {
        if (find<Server>(server)) sayMissing("nemraServerOpenAsync");
    });
}

int nemraServerOpenBlocking(nemra_server_t* server, int) {
    return guarded("nemraServerOpenBlocking", 0, [&] {
        if (find<Server>(server)) sayMissing("nemraServerOpenBlocking");
        return 0;
    });
}

void nemraServerCloseBlocking(nemra_server_t*) {}  // nothing is ever open

void nemraServerSetBusyChangedCallback(nemra_server_t* server, void* user, nemra_server_busy_callback callback) {
    guarded("nemraServerSetBusyChangedCallback", [&] {
        const auto known = find<Server>(server);
        if (!known) return;
        const std::lock_guard lock(known->mutex);
        known->user = user;
        known->busyChanged = callback;
    });
}

void nemraServerSendMessage(nemra_server_t* server, const char*, const char*, int) {
    guarded("nemraServerSendMessage", [&] {
        if (find<Server>(server))
            log::warning("nemraServerSendMessage", "no client is connected: render workers are not available yet");
    });
}

void nemraServerSetParameter(nemra_server_t* server, const char* name, const char* value) {
    guarded("nemraServerSetParameter", [&] {
        const auto known = find<Server>(server);
        if (!known) return;
        const std::string_view parameter = viewOf(name);
        if (parameter != "num_threads" && parameter != "library_paths") {
            log::warning("nemraServerSetParameter", "unknown parameter \"" + std::string(parameter) + "\"");
            return;
        }
        const std::lock_guard lock(known->mutex);
        known->parameters[std::string(parameter)] = viewOf(value);
    });
}

}  // extern "C"
