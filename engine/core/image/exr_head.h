/// The head of an OpenEXR file, before the library sees it.
#pragma once

#include <span>

namespace nemra::core {

/// Throws a PictureFault if an attribute claims more bytes than the file has, or another size than its type: the library takes
/// memory by that claim, up to 2 GiB, before it reads. Looks at all headers of a file of several parts.
void checkExrHead(std::span<const char> bytes);

}  // namespace nemra::core
