// Global functions of the recording engine.
#include "module/flat/nemra_global.h"

#include "tests/probe/foreign_thread.h"
#include "tests/probe/recorder.h"

using probe::call;

namespace {

nemra_log_callback sink = nullptr;
void* sinkUser = nullptr;

}  // namespace

extern "C" {

bool nemraGlobalInitialize(bool ocl, const char* device) { return call<bool>("nemraGlobalInitialize", ocl, device); }
const char* nemraGlobalGetVersionString() { return call<const char*>("nemraGlobalGetVersionString"); }
const char* nemraGlobalGetWorkdir() { return call<const char*>("nemraGlobalGetWorkdir"); }
bool nemraGlobalSetWorkdir(const char* directory) { return call<bool>("nemraGlobalSetWorkdir", directory); }
void addNemraLogMessageCallbackSink(nemra_log_callback callback, void* user, const char* text) {
    probe::record("addNemraLogMessageCallbackSink", user != nullptr, text);
    sink = callback;
    sinkUser = user;
}
char* pyNemraGlobalListOpenCLDevices() { return call<char*>("pyNemraGlobalListOpenCLDevices"); }

}  // extern "C"

extern "C" PROBE_API const char* probeLog(const char* message, int level) {
    return probe::onForeignThread([=] { sink(sinkUser, message, static_cast<LogLevel_t>(level)); });
}
