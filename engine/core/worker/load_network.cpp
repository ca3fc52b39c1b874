#include "engine/core/worker/load_network.h"

#include <dlfcn.h>

#include <mutex>
#include <string>

#include "engine/common/log.h"

namespace nemra::core::worker {

const network::Network* loadNetwork() {
    static std::mutex mutex;
    static const network::Network* loaded = nullptr;
    std::string why;
    {
        const std::lock_guard lock(mutex);
        if (loaded) return loaded;
        // Beside this library, by its RUNPATH. Never unloaded: its threads may outlive every object of ours.
        if (void* const library = ::dlopen("libnemraNetwork.so", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)) {
            if (const auto entry = reinterpret_cast<network::Entry>(::dlsym(library, network::kEntryName))) loaded = entry();
            if (!loaded) why = "it isn't of this version, or has no source of random numbers";
        } else {
            const char* const said = ::dlerror();
            why = said ? said : "no reason is known";
        }
        if (loaded) return loaded;
    }
    log::error("worker", "no render workers: can't load libnemraNetwork.so: " + why);
    return nullptr;
}

}  // namespace nemra::core::worker
