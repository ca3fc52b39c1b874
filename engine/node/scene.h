/// A scene as the engine keeps it: a container of its own copies.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/node/geometry.h"
#include "engine/node/node.h"

namespace nemra::node {

/// Another scene or a file of meshes, whose contents count as if they stood in the scene.
struct Import {
    std::string path;
    std::string prefix;     ///< put before the names of what comes in
    MeshFrame frame;        ///< of a file of meshes
    bool instances = true;  ///< whether the instances come along, or the nodes and geometries alone
};

/// A geometry is rendered where instances place it, once for each; a geometry that no instance names isn't rendered.
struct NEMRA_API Scene {
    std::string name;
    std::string activeSetup;  ///< name of a node of family setup; "" takes the only one
    std::vector<std::string> searchPaths;
    std::vector<Import> imports;
    std::vector<std::shared_ptr<Node>> nodes;
    std::vector<std::shared_ptr<Geometry>> geometries;
    std::vector<std::shared_ptr<Instance>> instances;

    /// First node of that family and name, or null.
    std::shared_ptr<Node> findNode(std::string_view family, std::string_view nodeName) const;
    /// First geometry of that name, or null.
    std::shared_ptr<Geometry> findGeometry(std::string_view geometryName) const;
};

}  // namespace nemra::node
