#include "engine/core/job/load_scene.h"

#include <future>
#include <stdexcept>
#include <utility>

#include "engine/common/blocked_signals.h"
#include "engine/common/log.h"
#include "engine/core/job/fingerprint.h"
#include "engine/core/library/libraries.h"
#include "engine/core/worker/scene_parcel.h"
#include "engine/node/import/load_imports.h"
#include "engine/node/read_scene.h"
#include "engine/node/svbin/svbin.h"

namespace nemra::core {

namespace {

/// What is made of a scene's nodes, as far as it was wanted.
struct PackedScene {
    Buffer svbin;
    Buffer parcel;  ///< without what comes from libraries
};

/// On a thread of its own if there is one to be had, else when it is asked for.
std::future<PackedScene> packAside(const node::Scene& scene, bool wantsSvbin, bool wantsParcel) {
    const BlockedSignals blocked;
    return std::async(std::launch::async | std::launch::deferred, [&scene, wantsSvbin, wantsParcel] {
        PackedScene packed{node::writeSvbin(scene), {}};
        if (wantsParcel) packed.parcel = worker::packScene(packed.svbin);
        if (!wantsSvbin) packed.svbin = {};
        return packed;
    });
}

/// `path` is the scene's own file, or "".
LoadedScene prepare(node::Scene& scene, const std::string& path, const Settings& settings, RenderPlaces places) {
    // Half a scene would give a wrong picture.
    if (!node::loadImports(scene, path, node::Unknown::refuse)) return {};
    Libraries libraries(settings.libraryPaths);
    // Both take long for large scenes, and neither changes the scene.
    std::future<PackedScene> packed;
    if (places.elsewhere || settings.resume) packed = packAside(scene, settings.resume, places.elsewhere);
    LoadedScene loaded{prepareScene(scene, settings.setup, &libraries, places.here), nullptr, 0};
    if (!loaded.prepared || !packed.valid()) return loaded;
    try {
        PackedScene ready = packed.get();
        const SceneContent content{std::move(ready.svbin), libraryContent(libraries.taken())};
        if (settings.resume) loaded.fingerprint = fingerprintOf(content, settings.setup);
        if (places.elsewhere) {
            worker::addLibrary(ready.parcel, content.library);
            loaded.parcel = std::make_shared<const Buffer>(std::move(ready.parcel));
        }
    } catch (const std::length_error& e) {
        log::error(
            path.empty() ? "scene \"" + scene.name + "\"" : path,
            std::string(places.elsewhere ? "it can't go to render workers: " : "a render of it can't be resumed: ") + e.what());
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
