#include "engine/core/job/load_scene.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "engine/common/log.h"
#include "engine/common/workdir.h"
#include "engine/node/read_scene.h"

namespace nemra::core {

namespace {

std::vector<std::string> libraryFiles(const std::vector<std::string>& paths) {
    std::vector<std::string> files;
    for (const std::string& path : paths) {
        const std::string full = resolvePath(path);
        std::error_code fault;
        if (!std::filesystem::is_directory(full, fault)) {
            if (std::filesystem::exists(full, fault)) {
                files.push_back(full);
            } else {
                log::warning(full, "there is no such library or folder of libraries");
            }
            continue;
        }
        const auto firstOfFolder = static_cast<std::ptrdiff_t>(files.size());
        for (auto entry = std::filesystem::directory_iterator(full, fault);
             !fault && entry != std::filesystem::directory_iterator(); entry.increment(fault)) {
            if (entry->path().extension() == ".svlib") files.push_back(entry->path().string());
        }
        if (fault) log::warning(full, "can't list the folder: " + fault.message());
        std::sort(files.begin() + firstOfFolder, files.end());  // the same order on every machine
    }
    return files;
}

bool hasNode(const node::Scene& scene, const node::Node& wanted) {
    return std::any_of(scene.nodes.begin(), scene.nodes.end(), [&](const std::shared_ptr<node::Node>& known) {
        return known && known->family() == wanted.family() && known->name() == wanted.name();
    });
}

/// Named nodes of the libraries stand behind the scene's own: where a name is taken, the scene's node counts.
void addLibraries(node::Scene& scene, const std::vector<std::string>& paths) {
    for (const std::string& file : libraryFiles(paths)) {
        node::Scene library;
        if (!node::readSceneFile(file, library)) continue;  // it has said why; a scene that needs it will say what is missing
        for (auto& node : library.nodes) {
            if (node && node->family() != "setup" && !hasNode(scene, *node)) scene.nodes.push_back(node);
        }
    }
}

std::shared_ptr<const PreparedScene> prepare(node::Scene& scene, const Settings& settings) {
    if (!scene.imports.empty()) {  // half a scene would give a wrong picture
        log::error("scene '" + scene.name + "'", "importing '" + scene.imports.front().path + "' is not available yet");
        return nullptr;
    }
    addLibraries(scene, settings.libraryPaths);
    return prepareScene(scene, settings.setup);
}

}  // namespace

std::shared_ptr<const PreparedScene> loadSceneFile(const std::string& path, const Settings& settings) {
    node::Scene scene;
    return node::readSceneFile(path, scene) ? prepare(scene, settings) : nullptr;
}

std::shared_ptr<const PreparedScene> loadSceneBytes(std::span<const char> bytes, const Settings& settings) {
    node::Scene scene;
    return node::readScene(bytes, "buffer", scene) ? prepare(scene, settings) : nullptr;
}

}  // namespace nemra::core
