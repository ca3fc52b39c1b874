/// Parameters of a renderer by their names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nemra::core {

/// The values that a render node takes along when it is added.
struct Settings {
    std::vector<std::string> libraryPaths;  ///< "library_paths": folders of .svlib files, or such files
    std::string setup;                      ///< "setup": name of the setup to render, "" for the scene's own choice
    std::string outputFile;                 ///< "output_file_name": where the last result goes, "" for nowhere
    bool outputRaw = false;                 ///< "output_raw"
    bool resume = false;                    ///< "resume": go on from the file of an earlier render, and save it while rendering
    double saveInterval = 60.0;             ///< "save_interval", s: how often; zero or below for never
    bool adaptive = false;                  ///< "adaptive": more samples where the picture is noisy
    double haltNoise = 0.0;                 ///< "halt_noise": see relativeNoise; zero or below for none
    std::uint32_t firstSample = 0;          ///< "first_sample": index of each pixel's first sample
    int threads = 0;                        ///< "num_threads": zero or below for all cores
    std::string remoteHost;                 ///< "remote_host": host:port of a worker
    bool localRemoteServer = false;         ///< "local_remote_server": a worker in this process instead
    std::string password;                   ///< "password" of the worker
    double remotePatience = 60.0;           ///< "remote_patience": s for which a render without any node waits for a worker

    /// False, and nothing changes, for an unknown name or a value that doesn't fit; `why` says the reason, never a password.
    bool set(std::string_view name, std::string_view value, std::string& why);
};

/// Parts between semicolons; empty ones are left out.
std::vector<std::string> splitPaths(std::string_view list);
/// False, and nothing changes, for what isn't a whole number. Numbers above what a machine bears are cut.
bool toThreads(std::string_view value, int& threads);

/// Cores that this process may use, at least 1.
int availableCores();
/// Render threads for a "num_threads": that many, or as many as there are cores.
int renderThreads(int wanted);

}  // namespace nemra::core
