// Scenes through the flat interface: their life, names, settings and encodings.
#include <span>

#include "engine/common/guarded.h"
#include "engine/common/text.h"
#include "engine/node/api/import_flags.h"
#include "engine/node/api/scene_objects.h"
#include "engine/node/api/serialize.h"
#include "engine/node/encoding/utf8.h"
#include "engine/node/import/load_imports.h"
#include "engine/node/read_scene.h"
#include "module/flat/nemra_scene.h"

using namespace nemra;
using namespace nemra::node;

extern "C" {

nemra_scene_t* nemraScene_create(const char* name) {
    return guarded<nemra_scene_t*>(__func__, nullptr, [&] {
        const auto object = std::make_shared<SceneObject>();
        object->contents().name = readableText(viewOf(name));
        return publish<nemra_scene_t>(object);
    });
}

void nemraScene_release(nemra_scene_t** handle) {
    guarded(__func__, [&] { retire(handle); });
}

const char* nemraScene_name(nemra_scene_t* scene) {
    return guarded<const char*>(__func__, "", [&] {
        const auto found = find<SceneObject>(scene);
        return found ? found->contents().name.c_str() : "";
    });
}

const char* nemraScene_getActiveSetupName(nemra_scene_t* scene) {
    return guarded<const char*>(__func__, "", [&] {
        const auto found = find<SceneObject>(scene);
        return found ? found->contents().activeSetup.c_str() : "";
    });
}

void nemraScene_setName(nemra_scene_t* scene, const char* name) {
    guarded(__func__, [&] {
        if (const auto found = find<SceneObject>(scene)) found->contents().name = readableText(viewOf(name));
    });
}

void nemraScene_addSearchPath(nemra_scene_t* scene, const char* path) {
    guarded(__func__, [&] {
        if (const auto found = find<SceneObject>(scene)) found->contents().searchPaths.push_back(readableText(viewOf(path)));
    });
}

// The name is kept in any case: a script may add its setup afterwards.
bool nemraScene_setActiveSetupName(nemra_scene_t* scene, const char* name) {
    return guarded<bool>(__func__, false, [&] {
        const auto found = find<SceneObject>(scene);
        if (!found) return false;
        found->contents().activeSetup = readableText(viewOf(name));
        if (viewOf(name).empty() || found->findNode("setup", viewOf(name))) return true;
        log::warning("scene '" + found->contents().name + "'",
                     "has no setup named '" + std::string(viewOf(name)) + "'; a render needs it");
        return false;
    });
}

bool nemraScene_addImport(nemra_scene_t* scene, const char* path, bool load, int32_t flags, const char* prefix) {
    return guarded<bool>(__func__, false, [&] {
        const auto found = find<SceneObject>(scene);
        if (!found) return false;
        const auto refuse = [&](const std::string& why) {
            log::error("nemraScene_addImport", why);
            return false;
        };
        if (viewOf(path).empty()) return refuse("no file is named");
        Import import;
        import.path = viewOf(path);
        import.prefix = readableText(viewOf(prefix));
        if (!applyImportFlags(import, flags)) return refuse("there are no flags " + std::to_string(flags));
        if (!load) {
            import.path = readableText(import.path);
            found->contents().imports.push_back(std::move(import));
            return true;
        }
        Scene loaded;
        return loadImport(import, found->contents(), Unknown::skip, loaded) && found->join(loaded, import.path);
    });
}

bool nemraScene_readFromFile(nemra_scene_t* scene, const char* path) {
    return guarded<bool>(__func__, false, [&] {
        const auto found = find<SceneObject>(scene);
        if (!found) return false;
        if (viewOf(path).empty()) {
            log::error("nemraScene_readFromFile", "no scene file is named");
            return false;
        }
        Scene read;
        if (!readSceneFile(std::string(viewOf(path)), read, Unknown::skip)) return false;
        found->replace(std::move(read));
        return true;
    });
}

bool nemraScene_readFromChar(nemra_scene_t* scene, const char* data, int32_t size) {
    return guarded<bool>(__func__, false, [&] {
        const auto found = find<SceneObject>(scene);
        if (!found) return false;
        if (data == nullptr || size < 0) {
            log::error("buffer",
                       size < 0 ? "can't read the scene: the bytes are more than 2 GiB" : "no scene: there is nothing in it");
            return false;
        }
        Scene read;
        if (!readScene({data, static_cast<std::size_t>(size)}, "buffer", read, Unknown::skip)) return false;
        found->replace(std::move(read));
        return true;
    });
}

char* nemraScene_writeToChar(nemra_scene_t* scene, int32_t format, int32_t* size) {
    if (size != nullptr) *size = 0;
    return guarded<char*>(__func__, nullptr, [&]() -> char* {
        const auto found = find<SceneObject>(scene);
        return found ? serialize("nemraScene_writeToChar", found->contents(), format, size) : nullptr;
    });
}

}  // extern "C"
