#include "engine/common/workdir.h"

#include <filesystem>
#include <mutex>
#include <system_error>

namespace nemra {

namespace {

struct Chosen {
    std::mutex mutex;
    std::string directory;  ///< "" until one is set
};

Chosen& chosen() {
    static auto* const instance = new Chosen;  // for the whole process: render threads may still write while it ends
    return *instance;
}

}  // namespace

std::string workdir() {
    {
        Chosen& all = chosen();
        const std::lock_guard lock(all.mutex);
        if (!all.directory.empty()) return all.directory;
    }
    std::error_code fault;
    const auto own = std::filesystem::current_path(fault);
    return fault ? std::string(".") : own.string();
}

bool setWorkdir(std::string_view directory, std::string& why) {
    const std::filesystem::path path = resolvePath(directory);
    std::error_code fault;
    const auto status = std::filesystem::status(path, fault);
    if (directory.empty() || !std::filesystem::is_directory(status)) {
        why = "\"" + std::string(directory) +
              "\" can't be the working directory: " + (fault ? fault.message() : std::string("it isn't a directory"));
        return false;
    }
    Chosen& all = chosen();
    const std::lock_guard lock(all.mutex);
    all.directory = path.lexically_normal().string();
    return true;
}

std::string resolvePath(std::string_view path) {
    if (path.empty() || path.front() == '/') return std::string(path);
    return workdir() + "/" + std::string(path);
}

}  // namespace nemra
