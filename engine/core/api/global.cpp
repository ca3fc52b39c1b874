// nemraGlobal*: the engine as a whole.
#include <algorithm>
#include <chrono>
#include <string>

#include "engine/common/guarded.h"
#include "engine/common/host_call.h"
#include "engine/common/text.h"
#include "engine/common/workdir.h"
#include "engine/core/api/version.h"
#include "engine/core/job/job_threads.h"
#include "engine/core/job/pending_message.h"
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
        using Milliseconds = std::chrono::milliseconds;
        const auto until = std::chrono::steady_clock::now() + Milliseconds(timeoutMs);
        const auto left = [&] {
            const auto time = std::chrono::duration_cast<Milliseconds>(until - std::chrono::steady_clock::now());
            return std::max(0, static_cast<int>(time.count()));
        };
        // A script that ends because its start has failed still hears why, or, where its callbacks take long, reads it: what
        // comes to the closed gate is printed.
        core::waitForMessages(timeoutMs / 4);
        const bool quiet = closeCallbackGate(left());
        core::waitForMessages(left());
        core::stopAllJobs(left());
        return quiet;
    });
}

void nemraGlobalSetHostLock(int (*acquire)(void), void (*release)(int)) {
    guarded("nemraGlobalSetHostLock", [&] { setHostLock({acquire, release}); });
}

}  // extern "C"
