#include "engine/core/job/load_scene.h"

#include "engine/core/job/fingerprint.h"
#include "engine/core/library/libraries.h"
#include "engine/node/import/load_imports.h"
#include "engine/node/read_scene.h"

namespace nemra::core {

namespace {

/// `path` is the scene's own file, or "".
std::shared_ptr<const PreparedScene> prepare(node::Scene& scene, const std::string& path, const Settings& settings) {
    // Half a scene would give a wrong picture.
    if (!node::loadImports(scene, path, node::Unknown::refuse)) return nullptr;
    Libraries libraries(settings.libraryPaths);
    const std::uint64_t fingerprint = settings.resume ? fingerprintOf(scene, settings.setup) : 0;
    return prepareScene(scene, settings.setup, &libraries, fingerprint);
}

}  // namespace

std::shared_ptr<const PreparedScene> loadSceneFile(const std::string& path, const Settings& settings) {
    node::Scene scene;
    return node::readSceneFile(path, scene) ? prepare(scene, path, settings) : nullptr;
}

std::shared_ptr<const PreparedScene> loadSceneBytes(std::span<const char> bytes, const Settings& settings) {
    node::Scene scene;
    return node::readScene(bytes, "buffer", scene) ? prepare(scene, "", settings) : nullptr;
}

}  // namespace nemra::core
