/// Layers: what is in the scene, what the camera sees, what shines.
#pragma once

#include <string>
#include <vector>

#include "engine/core/translate/class_table.h"
#include "engine/core/translate/translation.h"

namespace nemra::core {

struct LayerFlags {
    bool enabled = true;
    bool visible = true;  ///< to the camera directly
    bool light = true;    ///< its emitters shine
};

/// What a layer of a class takes away from what is filed under it.
using RestrictByLayer = void (*)(LayerFlags& flags, const node::Node& layer);
ClassTable<RestrictByLayer>& layerClasses();

class LayerTree {
public:
    LayerTree(NodePointer root, Translation& translation);

    /// For an instance filed under these paths: it is there if any of its layers is, and so for each flag. A layer is enabled,
    /// visible or lit only if all layers above it are. Without a path it belongs to the root. A path that doesn't exist counts as
    /// the root, with one warning that names `owner`.
    LayerFlags flags(const std::vector<std::vector<std::string>>& paths, const std::string& owner) const;

private:
    LayerFlags of(const std::vector<std::string>& path, const std::string& owner) const;

    NodePointer root_;
    Translation& translation_;
};

}  // namespace nemra::core
