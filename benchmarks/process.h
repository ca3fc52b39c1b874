/// What a benchmark's own process has used.
#pragma once

#include <time.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace nemra::benchmark {

/// From /proc/self/status ("VmRSS:", "VmHWM:"), in bytes; 0 for a key that isn't there.
inline double memory(const char* key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(key)) return 1024.0 * std::atof(line.c_str() + std::strlen(key) + 1);
    return 0.0;
}

/// Of all its threads.
inline double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

}  // namespace nemra::benchmark
