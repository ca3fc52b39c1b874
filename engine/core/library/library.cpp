#include "engine/core/library/library.h"

#include <sys/stat.h>

#include <array>
#include <mutex>

#include "engine/common/log.h"
#include "engine/node/read_scene.h"

namespace nemra::core {

namespace {

/// Tells one state of a file from another: device, inode, size, time of the last change in seconds and nanoseconds.
using Stamp = std::array<std::int64_t, 5>;

Stamp stampOf(const std::string& path) {
    struct stat about {};
    if (::stat(path.c_str(), &about) != 0) return {};
    return {static_cast<std::int64_t>(about.st_dev), static_cast<std::int64_t>(about.st_ino),
            static_cast<std::int64_t>(about.st_size), about.st_mtim.tv_sec, about.st_mtim.tv_nsec};
}

struct Kept {
    Stamp stamp{};
    std::shared_ptr<const Library> library;
};

struct Cache {
    std::mutex mutex;
    std::map<std::string, Kept> files;
};

Cache& cache() {
    static auto* const kept = new Cache;  // for the whole process
    return *kept;
}

std::shared_ptr<const Library> readFresh(const std::string& path) {
    node::Scene scene;
    bool isRead = false;
    {
        const log::Capture capture([](const log::Message& message) {
            const bool isFault = message.level == NEMRA_LOG_ERROR;
            log::emit(message.level, message.source, isFault ? message.text + "; this library is left out" : message.text);
        });
        isRead = node::readSceneFile(path, scene);
    }
    if (!isRead) return nullptr;
    if (!scene.geometries.empty() || !scene.instances.empty() || !scene.imports.empty()) {
        log::warning(path, "a library gives its nodes only; its geometries, instances and imports don't count");
    }
    return std::make_shared<const Library>(scene.nodes);
}

}  // namespace

Library::Library(const std::vector<std::shared_ptr<node::Node>>& nodes) {
    for (const auto& node : nodes) {
        if (node && !node->name().empty()) nodes_.try_emplace({node->family(), node->name()}, node);
    }
}

std::shared_ptr<const node::Node> Library::find(std::string_view family, std::string_view name, const node::Node* except) const {
    const auto found = nodes_.find({family, name});
    return found == nodes_.end() || found->second.get() == except ? nullptr : found->second;
}

void Library::addNames(std::string_view family, std::vector<std::string>& names) const {
    for (auto at = nodes_.lower_bound({family, {}}); at != nodes_.end() && at->first.first == family; ++at) {
        names.emplace_back(at->first.second);
    }
}

std::shared_ptr<const Library> readLibrary(const std::string& path) {
    const Stamp stamp = stampOf(path);  // before it is read: what is written meanwhile makes the next call read again
    {
        const std::lock_guard lock(cache().mutex);
        const auto found = cache().files.find(path);
        if (found != cache().files.end() && found->second.stamp == stamp) return found->second.library;
    }
    // Two threads may read one file at the same time; either result is right.
    auto library = readFresh(path);
    if (library) {
        const std::lock_guard lock(cache().mutex);
        cache().files[path] = {stamp, library};
    }
    return library;
}

}  // namespace nemra::core
