/// The libraries that a render may take named nodes from, in the order in which they are asked.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/library/library.h"

namespace nemra::core {

/// Files are read one after the other, when a name is looked for that none before had. Used by one thread.
class Libraries {
public:
    /// None at all.
    Libraries() = default;
    /// Files, whatever their extension, and the *.svlib files of folders in the order of their names; relative paths count from
    /// workdir(). One warning for each path that isn't there. Behind them come the libraries of the package that this engine
    /// belongs to. A file named twice counts where it was named first.
    explicit Libraries(const std::vector<std::string>& paths);

    /// A library that isn't a file, before all others.
    void addFirst(std::shared_ptr<const Library> library);

    /// Null if no library has one of that family and name other than `except`.
    std::shared_ptr<const node::Node> find(std::string_view family, std::string_view name, const node::Node* except = nullptr);
    /// Names of all nodes of the family, library by library.
    std::vector<std::string> names(std::string_view family);
    /// What find() has given so far, each node once.
    const std::vector<std::shared_ptr<const node::Node>>& taken() const noexcept { return taken_; }

private:
    struct File {
        std::string path;
        std::optional<std::shared_ptr<const Library>> library;  ///< empty before it is read, null if it can't be
    };
    void add(const std::string& path);
    void addFolder(const std::string& folder);
    static const Library* read(File& file);

    std::vector<File> files_;
    std::vector<std::shared_ptr<const node::Node>> taken_;
};

/// The folder `svlib` of the package around the engine: beside the folder that holds the engine's library. "" if there is none.
std::string packageLibraryFolder();

}  // namespace nemra::core
