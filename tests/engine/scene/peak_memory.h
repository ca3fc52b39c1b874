/// How much memory something takes.
#pragma once

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace nemra::test {

/// From /proc/self/status, in bytes.
inline double memoryStatus(const char* key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(key)) return 1024.0 * std::atof(line.c_str() + std::strlen(key));
    return 0.0;
}

/// Bytes that are resident at most while `body` runs, above what was there before. Zero under a sanitizer, whose own bookkeeping
/// would count.
template <class Body>
double peakMemory(const Body& body) {
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak counts from here
    const double before = memoryStatus("VmRSS:");
    body();
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return 0.0;
#else
    return memoryStatus("VmHWM:") - before;
#endif
}

}  // namespace nemra::test
