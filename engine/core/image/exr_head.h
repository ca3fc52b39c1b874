/// The head of an OpenEXR file, before the library sees it.
#pragma once

#include <cstddef>
#include <span>

namespace nemra::core {

/// Throws a PictureFault if an attribute claims more bytes than the file has, or another size than its type: the library takes
/// memory by that claim, up to 2 GiB, before it reads. Looks at all headers of a file of several parts.
/// Answers where they end: there the tables begin that say where the pixels are.
std::size_t checkExrHead(std::span<const char> bytes);
bool hasSeveralParts(std::span<const char> bytes) noexcept;

}  // namespace nemra::core
