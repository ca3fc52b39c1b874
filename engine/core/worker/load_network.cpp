#include "engine/core/worker/load_network.h"

#include <dlfcn.h>

#include <mutex>
#include <string>

#include "engine/common/log.h"

namespace nemra::core::worker {

namespace {

/// Beside the engine's other libraries, of which the first is always a file of its own. By name alone a loader that a sanitizer
/// has wrapped wouldn't look there.
std::string libraryPath() {
    constexpr const char* name = "libnemraNetwork.so";
    Dl_info about{};
    if (::dladdr(reinterpret_cast<const void*>(&log::emit), &about) == 0 || !about.dli_fname) return name;
    const std::string common = about.dli_fname;
    const auto slash = common.rfind('/');
    return slash == std::string::npos ? name : common.substr(0, slash + 1) + name;
}

}  // namespace

const network::Network* loadNetwork() {
    static std::mutex mutex;
    static const network::Network* loaded = nullptr;
    std::string why;
    {
        const std::lock_guard lock(mutex);
        if (loaded) return loaded;
        // Never unloaded: its threads may outlive every object of ours.
        if (void* const library = ::dlopen(libraryPath().c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)) {
            if (const auto entry = reinterpret_cast<network::Entry>(::dlsym(library, network::kEntryName))) loaded = entry();
            if (!loaded) why = "it isn't of this version, or has no source of random numbers";
        } else {
            const char* const said = ::dlerror();
            why = said ? said : "no reason is known";
        }
        if (loaded) return loaded;
    }
    log::error("worker", "no render workers: can't load the network's library: " + why);
    return nullptr;
}

}  // namespace nemra::core::worker
