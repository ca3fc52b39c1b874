#include "render/server.h"

#include "module/binders.h"
#include "module/bound_class.h"
#include "render/callback_slot.h"

namespace Nemra {

NemraServer::NemraServer() {
    handle = nemraServerCreate();
    takeOwnership();
}

NemraServer::~NemraServer() { emptyCallback(busy_); }

void NemraServer::onBusyStateChange(const BusyCallback& callback) {
    replaceCallback(busy_, callback);
    nemraServerSetBusyChangedCallback(handle, this, &NemraServer::busyChanged);
}

void NemraServer::sendMessage(const char* message, int type, const char* name) const {
    nemraServerSendMessage(handle, name, message, type);  // the engine wants the name first
}

void NemraServer::busyChanged(void* user, bool busy) {
    if (!user) return;
    static_cast<NemraServer*>(user)->busy_(busy);
}

namespace {

constexpr const char* kClassDoc = R"(Create a Server object

Aims to handle server rendering.

It allows to create a renderer worker which wait for jobs, listening to a TCP port. Look at client server rendering tutorial for usage.)";

constexpr const char* kOpenAsync = R"(Opens the given port on a server

This will do nothing is the server already has an open port

This function is asynchronous and will return before the server is listerning

It may choose another port if either 0 is passed, or if the port is not available)";

constexpr const char* kOpen = R"(Opens the given port on a server

This function is blocking and will return when the the server ready to listen or an error occured

It may choose another port if either 0 is passed, or if the port is not available

The function returns the open port or 0 if the server is not listening on any port

If the server was already listening on a port, function does nothing and returns the open port)";

constexpr const char* kClose =
    "Stops the server from listening on a port."
    "Returns when the port is actually closed";

constexpr const char* kOnBusyStateChange = R"(Sets a callback function for getting notifications on the server state

Removing the previous one if any.

Callback function is called with the server becomes busy(true) or available(false))";

constexpr const char* kSendMessage = R"(Sends a message to the client connected to this server

This allows seeing server render log on the master)";

constexpr const char* kSetParameter = R"( Sets a server parameter

Current parameters: (list may not be up to date)

- "num_threads" : number of simulation threads
- "library_paths" : semicolon separated list of path to get svlibs from
)";

}  // namespace

void bindServer(py::module_& module, const std::string&) {
    py::class_<CHandler<nemra_server_t>, std::shared_ptr<CHandler<nemra_server_t>>>(module, "CServerHandler");
    Nemra::BoundClass<NemraServer, CHandler<nemra_server_t>, std::shared_ptr<NemraServer>> server(module, "Server");
    server.def(py::init<>())
        .def("openAsync", &NemraServer::openAsync, py::arg("port"), kOpenAsync)
        .def("open", &NemraServer::open, py::arg("port"), kOpen)
        .def("close", &NemraServer::close, kClose)
        .def("onBusyStateChange", &NemraServer::onBusyStateChange, py::arg("call_back"), kOnBusyStateChange)
        .def("sendMessage", &NemraServer::sendMessage, py::arg("msg"), py::arg("type"), py::arg("name") = "server", kSendMessage)
        .def("setParameter", &NemraServer::setParameter, py::arg("name"), py::arg("value"), kSetParameter);
    server.doc() = kClassDoc;
}

}  // namespace Nemra
