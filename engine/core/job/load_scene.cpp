#include "engine/core/job/load_scene.h"

#include <future>
#include <stdexcept>
#include <utility>

#include "engine/common/log.h"
#include "engine/core/job/blocked_signals.h"
#include "engine/core/job/fingerprint.h"
#include "engine/core/library/libraries.h"
#include "engine/core/worker/scene_parcel.h"
#include "engine/node/import/load_imports.h"
#include "engine/node/read_scene.h"

namespace nemra::core {

namespace {

/// The scene's part of a parcel, made on a thread of its own if there is one to be had, else when it is asked for.
std::future<Buffer> packAside(const node::Scene& scene) {
    const BlockedSignals blocked;
    return std::async(std::launch::async | std::launch::deferred, [&scene] { return worker::packScene(scene); });
}

/// `path` is the scene's own file, or "".
LoadedScene prepare(node::Scene& scene, const std::string& path, const Settings& settings, RenderPlaces places) {
    // Half a scene would give a wrong picture.
    if (!node::loadImports(scene, path, node::Unknown::refuse)) return {};
    Libraries libraries(settings.libraryPaths);
    const std::uint64_t fingerprint = settings.resume ? fingerprintOf(scene, settings.setup) : 0;
    // Both take long for large scenes, and neither changes the scene.
    std::future<Buffer> packed;
    if (places.elsewhere) packed = packAside(scene);
    LoadedScene loaded{prepareScene(scene, settings.setup, &libraries, fingerprint, places.here), nullptr};
    if (!loaded.prepared || !places.elsewhere) return loaded;
    try {
        Buffer parcel = packed.get();
        worker::addLibraryNodes(parcel, libraries.taken());
        loaded.parcel = std::make_shared<const Buffer>(std::move(parcel));
    } catch (const std::length_error& e) {
        log::error(path.empty() ? "scene \"" + scene.name + "\"" : path,
                   std::string("it can't go to render workers: ") + e.what());
        return {};
    }
    return loaded;
}

}  // namespace

LoadedScene loadSceneFile(const std::string& path, const Settings& settings, RenderPlaces places) {
    node::Scene scene;
    return node::readSceneFile(path, scene) ? prepare(scene, path, settings, places) : LoadedScene{};
}

LoadedScene loadSceneBytes(std::span<const char> bytes, const Settings& settings, RenderPlaces places) {
    node::Scene scene;
    return node::readScene(bytes, "buffer", scene) ? prepare(scene, "", settings, places) : LoadedScene{};
}

}  // namespace nemra::core
