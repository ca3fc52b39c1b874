/// Whether bytes are text that every encoding can carry.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "module/flat/nemra_types.h"

namespace nemra::node {

/// Place of the first byte that isn't part of UTF-8 (RFC 3629: nothing overlong, no surrogates) or is zero; the size if there is
/// none.
NEMRA_API std::size_t firstNotText(std::string_view bytes) noexcept;

/// The text with U+FFFD in the place of each byte that isn't part of UTF-8: what a caller says of an object must be readable
/// again when it has been written.
NEMRA_API std::string readableText(std::string_view bytes);

}  // namespace nemra::node
