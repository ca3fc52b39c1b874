#include "engine/node/import/prefix_names.h"

#include <functional>
#include <unordered_set>

#include "engine/node/node_class.h"

namespace nemra::node {

namespace {

using Names = std::unordered_set<std::string>;
/// Gives what a text parameter becomes.
using Rewrite = std::function<std::string(const std::string&)>;

/// Changes all parameters of that kind, of the node and of the nodes below it, that aren't at their default.
void rewrite(Node& node, nemra_parameter_type_t type, const Rewrite& change) {
    std::vector<std::pair<std::string, std::string>> changes;
    for (const Node::Setting& setting : node.activeParameters()) {
        const auto* const text = std::get_if<std::string>(&setting.value->data);
        if (setting.isDefault || setting.spec->type != type || text == nullptr) continue;
        if (std::string changed = change(*text); changed != *text) changes.emplace_back(setting.spec->name, std::move(changed));
    }
    std::string why;
    for (auto& [name, value] : changes) node.set(name, Value{std::move(value)}, why);
    for (const ChildSpec& slot : node.nodeClass().children)
        if (!node.isDefaultChild(slot.name)) rewrite(*node.mutableChild(slot.name), type, change);
    for (const auto& item : node.mutableList()) rewrite(*item, type, change);
}

void rewrite(Scene& scene, nemra_parameter_type_t type, const Rewrite& change) {
    for (const auto& node : scene.nodes) rewrite(*node, type, change);
    for (const auto& geometry : scene.geometries)
        if (geometry->material) rewrite(*geometry->material, type, change);
    for (const auto& instance : scene.instances)
        if (instance->material) rewrite(*instance->material, type, change);
}

}  // namespace

void prefixNames(Scene& scene, const std::string& prefix) {
    if (prefix.empty()) return;
    Names linked;
    Names materials;
    Names geometries;
    for (const auto& node : scene.nodes) {
        linked.insert(node->name());
        if (node->family() == "material") materials.insert(node->name());
    }
    for (const auto& geometry : scene.geometries) geometries.insert(geometry->name);
    linked.insert(geometries.begin(), geometries.end());
    linked.erase("");
    materials.erase("");
    const auto prefixed = [&](const std::string& name, const Names& own) { return own.contains(name) ? prefix + name : name; };
    rewrite(scene, NEMRA_PARAMETER_LINK, [&](const std::string& name) { return prefixed(name, linked); });
    for (const auto& node : scene.nodes)
        if (!node->name().empty()) node->setName(prefix + node->name());
    for (const auto& geometry : scene.geometries) {
        geometry->name = prefix + geometry->name;
        geometry->materialName = prefixed(geometry->materialName, materials);
    }
    for (const auto& instance : scene.instances) {
        instance->geometryName = prefixed(instance->geometryName, geometries);
        instance->materialName = prefixed(instance->materialName, materials);
    }
    if (!scene.activeSetup.empty()) scene.activeSetup = prefix + scene.activeSetup;
}

void anchorFiles(Scene& scene, const Place& place) {
    rewrite(scene, NEMRA_PARAMETER_FILE, [&](const std::string& path) {
        if (path.empty()) return path;
        std::string found = findFile(path, place);
        return found.empty() ? path : found;
    });
}

}  // namespace nemra::node
