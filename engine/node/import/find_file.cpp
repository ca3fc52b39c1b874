#include "engine/node/import/find_file.h"

#include <filesystem>

#include "engine/common/workdir.h"

namespace nemra::node {

namespace fs = std::filesystem;

std::string findFile(const std::string& path, const Place& place) {
    if (fs::path(path).is_absolute()) return path;
    const fs::path folder = resolvePath(place.folder.empty() ? "." : place.folder);
    const auto lookIn = [&](const fs::path& where) -> std::string {
        std::error_code fault;
        const fs::path whole = (where / path).lexically_normal();
        return fs::exists(whole, fault) ? whole.string() : std::string();
    };
    std::string found = lookIn(folder);
    for (std::size_t i = 0; found.empty() && i < place.searchPaths.size(); ++i) found = lookIn(folder / place.searchPaths[i]);
    return found;
}

}  // namespace nemra::node
