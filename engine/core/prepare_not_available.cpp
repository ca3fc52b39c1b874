// Translating scenes comes with later work. Answers null and says so.
#include "engine/common/log.h"
#include "engine/core/render.h"

namespace nemra::core {

__attribute__((weak)) std::shared_ptr<const PreparedScene> prepareScene(const node::Scene& scene, const std::string&) {
    log::error(scene.name, "rendering is not available yet");
    return nullptr;
}

}  // namespace nemra::core
