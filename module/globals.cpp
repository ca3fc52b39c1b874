// Free functions of the module, the message levels, and the road of the engine's messages to one Python callable.
#include <sstream>

#include "module/binders.h"
#include "module/engine_text.h"
#include "module/flat/nemra_global.h"

namespace Nemra {

namespace {

using MessageCallback = std::function<void(const char*, LogLevel_t)>;

/// The one slot. Read by engine threads without the interpreter lock, written under it: replacing the callable while the engine
/// emits a message is a race that is accepted.
MessageCallback& messageSlot() {
    static MessageCallback slot;
    return slot;
}

/// Called by the engine on any thread. An empty slot throws std::bad_function_call, a callable that raises its Python error:
/// both go to the engine.
void routeMessage(void*, const char* message, LogLevel_t level) { messageSlot()(message, level); }

void onMessage(MessageCallback callback) {
    messageSlot() = std::move(callback);
    addNemraLogMessageCallbackSink(routeMessage, nullptr, "");
}

/// An empty text gives one empty name, a '|' at the end an empty last one.
std::vector<std::string> listOpenClDevices() {
    std::stringstream names(takeText(pyNemraGlobalListOpenCLDevices()));
    std::vector<std::string> devices;
    while (!names.eof()) {
        std::string name;
        std::getline(names, name, '|');
        devices.push_back(name);
    }
    return devices;
}

}  // namespace

void bindGlobals(py::module_& module, const std::string& packageName) {
    py::enum_<LogLevel_t>(module, "messageType", py::arithmetic(), "Enumerator for message log level")
        .value("None", NEMRA_LOG_NONE, "no type")
        .value("Debug", NEMRA_LOG_DEBUG, "Debug only ")
        .value("Info", NEMRA_LOG_INFO, "Info only")
        .value("Warning", NEMRA_LOG_WARNING, "Warning only")
        .value("Error", NEMRA_LOG_ERROR, "Error only")
        .value("Critcal", NEMRA_LOG_CRITICAL, "Critcal only")
        .value("All", NEMRA_LOG_ALL, "All types")
        .value("Default", NEMRA_LOG_DEFAULT, "Info Warning and Error")
        .export_values();

    const std::string importLine = "from " + packageName + " import nemra";

    module.def(
        "version", [] { return std::string(nemraGlobalGetVersionString()); },
        ("Gets the full version of nemra\n\n"
         ".. code-block:: python\n\n"
         "    " +
         importLine +
         "\n\n"
         "    nemra.version() # Nemra 2024 R1 (1.2.3-0123456789ab)\n")
            .c_str());
    module.def(
        "init", [](bool openCl, const std::string& device) { return nemraGlobalInitialize(openCl, device.c_str()); },
        py::arg("ocl_support") = false, py::arg("ocl_device") = "",
        ("Initialize nemra\n\n"
         "Call this to initialize nemra, You can enable OpenCL here and choose the OpenCL device by its name\n\n"
         ".. code-block:: python\n\n"
         "    " +
         importLine +
         "\n\n"
         "    devicename = nemra.listOpenCLDevices()\n"
         "    if len(devicename) > 0:\n"
         "        nemra.init(ocl_device=devicename[0], ocl_support=True)\n"
         "    else:\n"
         "        nemra.init()\n\n"
         ".. note::\n\n"
         "    Opencl is only used when post processing outputs. (image denoiser, human vision filters, ...)\n")
            .c_str());
    module.def(
        "getWorkDir", [] { return std::string(nemraGlobalGetWorkdir()); },
        ("Get the current working directory\n\n"
         ".. code-block:: python\n\n"
         "    " +
         importLine +
         "\n\n"
         "    nemra.getWorkDir()\n")
            .c_str());
    module.def(
        "setWorkDir", [](const std::string& directory) { nemraGlobalSetWorkdir(directory.c_str()); }, py::arg("work_dir"),
        ("Sets the current working directory\n\n"
         ".. code-block:: python\n\n"
         "    " +
         importLine +
         "\n\n"
         "    nemra.setWorkDir(\"/path/to/scenes\")\n\n"
         ".. warning::\n\n"
         "    For network rendering scene files must be on the same path relative to working directory on every node.\n")
            .c_str());
    module.def("onMessage", &onMessage, py::arg("call_back"),
               ("Sets the global message callback\n\n"
                "All messages sent by nemra are handle via this user defined call_back function.\n\n"
                "The first parameter of the callback is the message, the second the log level type (:meth:`" +
                packageName +
                ".nemra.messageType`).\n\n"
                ".. code-block:: python\n\n"
                "    " +
                importLine +
                "\n\n"
                "    def onMessage(msg, msg_type):\n"
                "        if msg_type > nemra.messageType.Info:\n"
                "            print(msg)\n\n"
                "    nemra.onMessage(onMessage)\n\n"
                ".. note::\n\n"
                "    Calling onMessage again replaces the previous callback by the new one.\n")
                   .c_str());
    module.def("listOpenCLDevices", &listOpenClDevices,
               ("Get available OpenCL Devices in a list\n\n"
                ".. code-block:: python\n\n"
                "    " +
                importLine +
                "\n\n"
                "    nemra.listOpenCLDevices()\n")
                   .c_str());
}

}  // namespace Nemra
