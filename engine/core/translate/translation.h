/// What every maker of a light part needs while a scene is translated: finding named nodes, following links, and telling the user
/// what is wrong.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "engine/core/library/libraries.h"
#include "engine/core/translate/node_paths.h"
#include "engine/node/scene.h"

namespace nemra::core {

/// A scene that can't be rendered: where, and why. Becomes the one error message of a failed start.
class SceneFault : public std::runtime_error {
public:
    SceneFault(std::string source, const std::string& why) : std::runtime_error(why), source_(std::move(source)) {}
    const std::string& source() const noexcept { return source_; }

private:
    std::string source_;
};

/// A chain of links longer than this is taken for a cycle.
inline constexpr int kMaxLinks = 64;

using NodePointer = std::shared_ptr<const node::Node>;

/// One translation of one scene. Used by one thread.
class Translation {
public:
    /// `libraries` may be null: then names are those of the scene alone. What is given must outlive the translation.
    explicit Translation(const node::Scene& scene, Libraries* libraries = nullptr) : scene_(scene), libraries_(libraries) {}

    const node::Scene& scene() const noexcept { return scene_; }

    /// Follows `linked` nodes to the node that they stand for. Null, after one warning, if a link leads nowhere or in a circle.
    NodePointer resolve(NodePointer node);

    /// The node of that family and name: the scene's, else that of the first library that has one; null if there is none. A node
    /// that asks for another of its own name gives itself as `asking`, and isn't taken for it.
    NodePointer find(std::string_view family, std::string_view name, const node::Node* asking = nullptr) const;
    /// What to tell of a name that find() didn't find: that there is no such node, and which names come near.
    std::string missing(std::string_view family, std::string_view name) const;

    /// A warning about a node, given once however often the node is met. Its source is the node's path in the scene.
    void warn(const node::Node& node, std::string_view text);
    void warn(std::string_view source, std::string_view text);

    /// Such a warning for a node whose class has no light part; `text` says what takes its place.
    void warnUnlit(const node::Node& node, std::string_view text);
    /// Follows the tree below a node that was translated and warns of what no translation met: nodes that somebody has put there
    /// and whose class has no light part. One warning each; none for those that warnUnlit told of, nor for what lies below them.
    void reportUnlit(const NodePointer& root);

private:
    const node::Scene& scene_;
    Libraries* const libraries_;
    std::optional<NodePaths> paths_;
    std::set<std::pair<std::string, std::string>> said_;
    std::set<const node::Node*> unlit_;    ///< told of by warnUnlit
    std::set<const node::Node*> visited_;  ///< by reportUnlit
};

}  // namespace nemra::core
