#include "engine/core/job/load_scene.h"

#include "engine/common/log.h"
#include "engine/core/library/libraries.h"
#include "engine/node/read_scene.h"

namespace nemra::core {

namespace {

std::shared_ptr<const PreparedScene> prepare(const node::Scene& scene, const Settings& settings) {
    if (!scene.imports.empty()) {  // half a scene would give a wrong picture
        log::error("scene '" + scene.name + "'", "importing '" + scene.imports.front().path + "' is not available yet");
        return nullptr;
    }
    Libraries libraries(settings.libraryPaths);
    return prepareScene(scene, settings.setup, &libraries);
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
