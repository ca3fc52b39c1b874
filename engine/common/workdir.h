/// The folder against which the engine reads relative file names.
#pragma once

#include <string>
#include <string_view>

#include "module/flat/nemra_types.h"

namespace nemra {

/// The folder set last, else the process's own at the time of the call. Absolute.
NEMRA_API std::string workdir();
/// False, and nothing changes, if there is no such folder; `why` then says the reason. A relative one counts from the current
/// workdir().
NEMRA_API bool setWorkdir(std::string_view directory, std::string& why);
/// `path` as it is if it is absolute or empty, else below workdir().
NEMRA_API std::string resolvePath(std::string_view path);

}  // namespace nemra
