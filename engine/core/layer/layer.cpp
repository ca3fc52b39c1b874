#include "engine/core/layer/layer.h"

namespace nemra::core {

namespace {

void restrictByGeneric(LayerFlags& flags, const node::Node& layer) {
    flags.enabled = flags.enabled && layer.boolean("enabled");
    flags.visible = flags.visible && layer.boolean("visible");
    flags.light = flags.light && layer.boolean("light");
}

const bool kKnown = layerClasses().add("generic", restrictByGeneric);

void restrictBy(LayerFlags& flags, const node::Node& layer) {
    if (const RestrictByLayer restrictFlags = layerClasses().find(layer.type())) restrictFlags(flags, layer);
}

}  // namespace

ClassTable<RestrictByLayer>& layerClasses() {
    static ClassTable<RestrictByLayer> table("layer");
    return table;
}

LayerTree::LayerTree(NodePointer root, Translation& translation)
    : root_(translation.resolve(std::move(root))), translation_(translation) {}

LayerFlags LayerTree::of(const std::vector<std::string>& path, const std::string& owner) const {
    LayerFlags flags;
    NodePointer layer = root_;
    if (layer) restrictBy(flags, *layer);
    for (const std::string& name : path) {
        NodePointer next;
        if (layer) {
            for (const NodePointer& child : layer->list()) {
                if (child->name() != name) continue;
                next = translation_.resolve(child);
                break;
            }
        }
        if (!next) {
            std::string full;
            for (const std::string& part : path) full += (full.empty() ? "" : "/") + part;
            translation_.warn(owner, "is filed under layer \"" + full + "\", which the setup doesn't have; it is put at the top");
            return flags;
        }
        layer = std::move(next);
        restrictBy(flags, *layer);
    }
    return flags;
}

LayerFlags LayerTree::flags(const std::vector<std::vector<std::string>>& paths, const std::string& owner) const {
    if (paths.empty()) return of({}, owner);
    LayerFlags any{false, false, false};
    for (const auto& path : paths) {
        const LayerFlags one = of(path, owner);
        if (!one.enabled) continue;
        any.enabled = true;
        any.visible = any.visible || one.visible;
        any.light = any.light || one.light;
    }
    return any;
}

}  // namespace nemra::core
