#include "engine/core/translate/translation.h"

#include <vector>

#include "engine/common/log.h"
#include "engine/core/library/nearest_names.h"
#include "engine/core/translate/class_table.h"

namespace nemra::core {

NodePointer Translation::resolve(NodePointer node) {
    const NodePointer start = node;
    for (int step = 0; node && node->type() == "linked"; ++step) {
        const std::string& name = node->text("node");
        if (step == kMaxLinks) {
            warn(*start, "its links go round in a circle (last: \"" + name + "\"); it is left out");
            return nullptr;
        }
        NodePointer next = name.empty() ? nullptr : find(node->family(), name, node.get());
        if (!next) {
            warn(*start, "links to \"" + name + "\", but " + missing(node->family(), name) + "; it is left out");
            return nullptr;
        }
        node = std::move(next);
    }
    return node;
}

NodePointer Translation::find(std::string_view family, std::string_view name, const node::Node* asking) const {
    for (const auto& node : scene_.nodes) {
        if (node && node.get() != asking && node->family() == family && node->name() == name) return node;
    }
    return libraries_ ? libraries_->find(family, name, asking) : nullptr;
}

std::string Translation::missing(std::string_view family, std::string_view name) const {
    std::vector<std::string> names = libraries_ ? libraries_->names(family) : std::vector<std::string>();
    for (const auto& node : scene_.nodes) {
        if (node && node->family() == family) names.push_back(node->name());
    }
    std::string text =
        libraries_ ? "neither in the scene nor in a library is there a node of family " : "the scene has no node of family ";
    text += std::string(family) + " and that name";
    std::string_view before = " (names near it: \"";
    for (const std::string& near : nearestNames(name, std::move(names))) {
        text.append(before).append(near);
        before = "\", \"";
    }
    return before.front() == '"' ? text + "\")" : text;
}

void Translation::warn(const node::Node& node, std::string_view text) {
    if (!paths_) paths_.emplace(scene_);  // most scenes give no cause
    warn(paths_->of(node), text);
}

void Translation::warn(std::string_view source, std::string_view text) {
    if (said_.emplace(source, text).second) log::warning(source, text);
}

void Translation::warnUnlit(const node::Node& node, std::string_view text) {
    unlit_.insert(&node);
    warn(node, text);
}

void Translation::reportUnlit(const NodePointer& root) {
    std::vector<NodePointer> open{root};  // not recursive: links can make long chains
    while (!open.empty()) {
        const NodePointer node = resolve(std::move(open.back()));
        open.pop_back();
        if (!node || unlit_.contains(node.get()) || !visited_.insert(node.get()).second) continue;
        if (node->family() == "output") continue;  // outputs and filters tell when they are run
        if (!hasLightPart(node->family(), node->type())) {
            warnUnlit(*node, "its class isn't simulated yet; it is left out");
            continue;
        }
        for (const node::ChildSpec& slot : node->nodeClass().children) {
            if (!node->isDefaultChild(slot.name)) open.push_back(node->child(slot.name));
        }
        for (NodePointer& item : node->list()) open.push_back(std::move(item));
    }
}

}  // namespace nemra::core
