#include "engine/core/library/libraries.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "engine/common/log.h"
#include "engine/common/workdir.h"

namespace nemra::core {

namespace fs = std::filesystem;

Libraries::Libraries(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        const std::string full = resolvePath(path);
        std::error_code fault;
        if (fs::is_directory(full, fault)) {
            addFolder(full);
        } else if (fs::exists(full, fault)) {
            add(full);
        } else {
            log::warning(full, "there is no such library or folder of libraries");
        }
    }
    if (const std::string own = packageLibraryFolder(); !own.empty()) addFolder(own);
}

void Libraries::add(const std::string& path) {
    std::error_code fault;
    fs::path real = fs::canonical(path, fault);
    if (fault) real = path;
    const bool isKnown = std::any_of(files_.begin(), files_.end(), [&](const File& file) { return file.path == real; });
    if (!isKnown) files_.push_back({real.string(), std::nullopt});
}

void Libraries::addFolder(const std::string& folder) {
    std::vector<std::string> found;
    std::error_code fault;
    for (auto entry = fs::directory_iterator(folder, fault); !fault && entry != fs::directory_iterator();
         entry.increment(fault)) {
        if (entry->path().extension() == ".svlib") found.push_back(entry->path().string());
    }
    if (fault) log::warning(folder, "can't list the folder: " + fault.message());
    std::sort(found.begin(), found.end());  // the same order on every machine
    for (const std::string& path : found) add(path);
}

void Libraries::addFirst(std::shared_ptr<const Library> library) { files_.insert(files_.begin(), {std::string(), std::move(library)}); }

const Library* Libraries::read(File& file) {
    if (!file.library) file.library = readLibrary(file.path);
    return file.library->get();
}

std::shared_ptr<const node::Node> Libraries::find(std::string_view family, std::string_view name, const node::Node* except) {
    for (File& file : files_) {
        const Library* const library = read(file);
        if (auto found = library ? library->find(family, name, except) : nullptr) {
            if (std::find(taken_.begin(), taken_.end(), found) == taken_.end()) taken_.push_back(found);
            return found;
        }
    }
    return nullptr;
}

std::vector<std::string> Libraries::names(std::string_view family) {
    std::vector<std::string> names;
    for (File& file : files_) {
        if (const Library* const library = read(file)) library->addNames(family, names);
    }
    return names;
}

std::string packageLibraryFolder() {
    Dl_info about{};
    if (::dladdr(reinterpret_cast<const void*>(&packageLibraryFolder), &about) == 0 || !about.dli_fname) return {};
    std::error_code fault;
    const fs::path engine = fs::canonical(about.dli_fname, fault);
    if (fault) return {};
    const fs::path folder = engine.parent_path().parent_path() / "svlib";
    return fs::is_directory(folder, fault) ? folder.string() : std::string();
}

}  // namespace nemra::core
