// nemraGlobal*: the engine as a whole.
#include <chrono>
#include <string>

#include "engine/common/guarded.h"
#include "engine/common/host_call.h"
#include "engine/common/text.h"
#include "engine/common/workdir.h"
#include "engine/core/api/version.h"
#include "engine/core/job/job_threads.h"
#include "engine/core/opencl/device.h"
#include "module/flat/nemra_global.h"

using namespace nemra;

extern "C" {

bool nemraGlobalInitialize(bool ocl_support, const char* ocl_device) {
    return guarded("nemraGlobalInitialize", false, [&] {
        if (!ocl_support) {
            core::opencl::chooseNone();
            return true;
        }
        const std::string device(viewOf(ocl_device));
        if (core::opencl::chooseDevice(device)) return true;
        log::error("nemraGlobalInitialize", "there is no OpenCL device" + (device.empty() ? "" : " \"" + device + "\"") +
                                                ": outputs are processed on the processor");
        return false;
    });
}

const char* nemraGlobalGetVersionString(void) { return core::kVersionText; }

const char* nemraGlobalGetWorkdir(void) {
    return guarded<const char*>("nemraGlobalGetWorkdir", "", [&] {
        static thread_local std::string text;
        text = workdir();
        return text.c_str();
    });
}

bool nemraGlobalSetWorkdir(const char* directory) {
    return guarded("nemraGlobalSetWorkdir", false, [&] {
        std::string why;
        if (setWorkdir(viewOf(directory), why)) return true;
        log::error("nemraGlobalSetWorkdir", why);
        return false;
    });
}

void addNemraLogMessageCallbackSink(nemra_log_callback callback, void* user, const char* text) {
    guarded("addNemraLogMessageCallbackSink", [&] { log::addHostSink(callback, user, viewOf(text)); });
}

char* pyNemraGlobalListOpenCLDevices(void) {
    return guarded<char*>("pyNemraGlobalListOpenCLDevices", nullptr, [] {
        std::string names;
        for (const core::opencl::Device* const device : core::opencl::devices()) {
            names += (names.empty() ? "" : "|") + device->name();
        }
        return callersText(names);
    });
}

bool nemraGlobalCloseCallbacks(int timeoutMs) {
    return guarded("nemraGlobalCloseCallbacks", false, [&] {
        const auto begin = std::chrono::steady_clock::now();
        const bool quiet = closeCallbackGate(timeoutMs);
        const auto used = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin).count();
        core::stopAllJobs(timeoutMs - static_cast<int>(used));
        return quiet;
    });
}

void nemraGlobalSetHostLock(int (*acquire)(void), void (*release)(int)) {
    guarded("nemraGlobalSetHostLock", [&] { setHostLock({acquire, release}); });
}

}  // extern "C"
