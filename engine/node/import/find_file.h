/// Where files are looked for that a scene names.
#pragma once

#include <string>
#include <vector>

#include "module/flat/nemra_types.h"

namespace nemra::node {

struct Place {
    std::string folder;                    ///< of the file that names others; "" for workdir()
    std::vector<std::string> searchPaths;  ///< relative ones count from `folder`
};

/// `path` if it is absolute, else the first that there is of `path` in the folder and in the search paths, in their order.
/// "" if there is none.
NEMRA_API std::string findFile(const std::string& path, const Place& place);

}  // namespace nemra::node
