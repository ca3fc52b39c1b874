#include "engine/core/output/resolve_links.h"

namespace nemra::core {

NodePointer withoutLinks(const NodePointer& owner, Translation& translation) {
    std::vector<std::shared_ptr<node::Node>> replaced;
    for (const NodePointer& item : owner->list()) {
        const NodePointer resolved = translation.resolve(item);
        if (!resolved) continue;
        const NodePointer complete = withoutLinks(resolved, translation);
        if (complete == item) continue;
        replaced.push_back(complete->copy());
        replaced.back()->setName(item->name());
    }
    if (replaced.empty()) return owner;
    const std::shared_ptr<node::Node> copy = owner->copy();
    std::string why;
    for (auto& item : replaced) {
        if (!copy->setChild(std::move(item), why)) translation.warn(*owner, why);
    }
    return copy;
}

}  // namespace nemra::core
