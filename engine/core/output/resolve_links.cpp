#include "engine/core/output/resolve_links.h"

namespace nemra::core {

NodePointer withoutLinks(const NodePointer& owner, Translation& translation) {
    std::vector<std::shared_ptr<node::Node>> replaced;
    const auto take = [&](const NodePointer& item, const std::string& name) {
        const NodePointer resolved = translation.resolve(item);
        if (!resolved) return;
        const NodePointer complete = withoutLinks(resolved, translation);
        if (complete == item) return;
        replaced.push_back(complete->copy());
        replaced.back()->setName(name);
    };
    for (const NodePointer& item : owner->list()) take(item, item->name());
    if (owner->family() == "output" || owner->family() == "filter") {
        for (const node::ChildSpec& slot : owner->nodeClass().children) take(owner->child(slot.name), slot.name);
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
