/// A render worker, as scripts see it.
#pragma once

#include <functional>

#include "module/binding.h"
#include "module/handle.h"

namespace Nemra {

/// One engine server, owned by this wrapper, whose address is the user pointer of the engine's callback: neither copied nor
/// moved.
class NemraServer : public CHandler<nemra_server_t> {
public:
    using BusyCallback = std::function<void(bool)>;

    NemraServer();
    ~NemraServer();  ///< empties the slot, then drops its callable, then gives the handle back
    NemraServer(const NemraServer&) = delete;

    void openAsync(int port) const { nemraServerOpenAsync(handle, port); }
    /// The open port, or 0.
    int open(int port) const { return nemraServerOpenBlocking(handle, port); }
    void close() const { nemraServerCloseBlocking(handle); }
    /// An empty function empties the slot; the engine then still calls the trampoline, which throws std::bad_function_call.
    void onBusyStateChange(const BusyCallback& callback);
    void sendMessage(const char* message, int type, const char* name) const;
    void setParameter(const char* name, const char* value) const { nemraServerSetParameter(handle, name, value); }

private:
    /// Trampoline: entered on engine threads without the interpreter lock.
    static void busyChanged(void* user, bool busy);

    BusyCallback busy_;
};

}  // namespace Nemra
