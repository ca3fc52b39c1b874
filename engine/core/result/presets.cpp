#include "engine/core/result/presets.h"

#include <utility>

namespace nemra::core {

std::vector<std::shared_ptr<const node::Node>> outputsOf(const std::shared_ptr<const node::Node>& instrument) {
    std::vector<std::shared_ptr<const node::Node>> outputs;
    if (instrument) {
        for (auto& child : instrument->list()) {
            if (child && child->family() == "output") outputs.push_back(std::move(child));
        }
    }
    if (outputs.empty()) {
        if (const node::NodeClass* const picture = node::findClass("output", "rgbimage")) {
            outputs.push_back(std::make_shared<node::Node>(*picture, "rgbimage"));
        }
    }
    return outputs;
}

}  // namespace nemra::core
