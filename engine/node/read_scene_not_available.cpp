// Reading scenes comes with later work. Answers false and says so.
#include "engine/common/log.h"
#include "engine/node/read_scene.h"

namespace nemra::node {

__attribute__((weak)) bool readScene(std::span<const char>, std::string_view origin, Scene&) {
    log::error(origin, "reading scenes is not available yet");
    return false;
}
__attribute__((weak)) bool readSceneFile(const std::string& path, Scene&) {
    log::error(path, "reading scenes is not available yet");
    return false;
}

}  // namespace nemra::node
