#include "engine/core/job/load_scene.h"

#include <stdexcept>

#include "engine/common/log.h"
#include "engine/core/job/fingerprint.h"
#include "engine/core/library/libraries.h"
#include "engine/core/worker/scene_parcel.h"
#include "engine/node/import/load_imports.h"
#include "engine/node/read_scene.h"

namespace nemra::core {

namespace {

/// `path` is the scene's own file, or "".
LoadedScene prepare(node::Scene& scene, const std::string& path, const Settings& settings, bool wantsParcel) {
    // Half a scene would give a wrong picture.
    if (!node::loadImports(scene, path, node::Unknown::refuse)) return {};
    Libraries libraries(settings.libraryPaths);
    LoadedScene loaded{prepareScene(scene, settings.setup, &libraries), nullptr, 0};
    if (!loaded.prepared || !(wantsParcel || settings.resume)) return loaded;
    try {
        const SceneContent content = contentOf(scene, libraries.taken());
        if (settings.resume) loaded.fingerprint = fingerprintOf(content, settings.setup);
        if (wantsParcel) loaded.parcel = std::make_shared<const Buffer>(worker::packScene(content));
    } catch (const std::length_error& e) {
        log::error(path.empty() ? "scene \"" + scene.name + "\"" : path,
                   std::string(wantsParcel ? "it can't go to render workers: " : "a render of it can't be resumed: ") + e.what());
        return {};
    }
    return loaded;
}

}  // namespace

LoadedScene loadSceneFile(const std::string& path, const Settings& settings, bool wantsParcel) {
    node::Scene scene;
    return node::readSceneFile(path, scene) ? prepare(scene, path, settings, wantsParcel) : LoadedScene{};
}

LoadedScene loadSceneBytes(std::span<const char> bytes, const Settings& settings, bool wantsParcel) {
    node::Scene scene;
    return node::readScene(bytes, "buffer", scene) ? prepare(scene, "", settings, wantsParcel) : LoadedScene{};
}

}  // namespace nemra::core
