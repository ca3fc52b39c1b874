#include "engine/core/worker/server_settings.h"

#include "engine/core/job/settings.h"

namespace nemra::core::worker {

bool ServerSettings::set(std::string_view name, std::string_view value, std::string& why) {
    if (name == "password") {
        password = value;
    } else if (name == "library_paths") {
        libraryPaths = splitPaths(value);
    } else if (name == "num_threads") {
        if (!toThreads(value, threads)) {
            why = "the parameter \"num_threads\" takes a whole number, not \"" + std::string(value) + "\"";
            return false;
        }
    } else {
        why = "unknown parameter \"" + std::string(name) + "\"";
        return false;
    }
    return true;
}

}  // namespace nemra::core::worker
