/// A file of named nodes (.svlib): a scene in any of its encodings of which the nodes count and nothing else.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/node/node.h"

namespace nemra::core {

/// Never changes once it is read, so any number of scenes may share it.
class Library {
public:
    /// Unnamed nodes are dropped; of two of one family and name the first counts.
    explicit Library(const std::vector<std::shared_ptr<node::Node>>& nodes);

    /// Null if there is none of that family and name, or only `except`.
    std::shared_ptr<const node::Node> find(std::string_view family, std::string_view name, const node::Node* except) const;
    /// Adds the names of all nodes of the family.
    void addNames(std::string_view family, std::vector<std::string>& names) const;

private:
    std::map<std::pair<std::string_view, std::string_view>, std::shared_ptr<const node::Node>> nodes_;  // keys view into nodes
};

/// The library in that file (absolute path). The process keeps what it has read until the file's identity, size or time of change
/// differs. Null for a file that can't be read or isn't a scene, after one error message in each call that meets it.
/// Any thread may call; messages are emitted without a lock.
std::shared_ptr<const Library> readLibrary(const std::string& path);

}  // namespace nemra::core
