/// The head of an OpenEXR file, before the library sees it.
#pragma once

#include <span>

namespace nemra::core {

/// Throws a PictureFault if an attribute of the first header claims more bytes than the file has: the library takes memory by
/// that claim, up to 2 GiB, before it reads. All headers of a file of several parts.
void checkExrHead(std::span<const char> bytes);

}  // namespace nemra::core
