/// Parameters of a server by their names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nemra::core::worker {

struct ServerSettings {
    int threads = 0;                        ///< "num_threads": zero or below for all cores
    std::vector<std::string> libraryPaths;  ///< "library_paths"
    std::string password;                   ///< "password"; without one the server serves this machine alone
    bool thisMachineOnly = false;           ///< even with a password; not for scripts

    /// False, and nothing changes, for an unknown name or a value that doesn't fit; `why` says the reason, never a password.
    bool set(std::string_view name, std::string_view value, std::string& why);
};

}  // namespace nemra::core::worker
