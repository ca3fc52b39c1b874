/// Texts that leave the engine.
#pragma once

#include <span>
#include <string_view>

#include "module/flat/nemra_common.h"

namespace nemra {

/// A copy that the caller frees with freeCharArray, with a closing zero. Throws std::bad_alloc; never null.
NEMRA_API char* callersText(std::string_view text);
/// The same for bytes: the copy has bytes.size() bytes and a closing zero.
NEMRA_API char* callersBytes(std::span<const char> bytes);

/// A text that lives for ever and that freeCharArray leaves alone: for functions whose result some callers free and others keep.
/// For a handful of short fixed words only.
NEMRA_API char* permanentText(std::string_view word);

/// The view of a text argument of the flat interface, where null counts as empty.
inline std::string_view viewOf(const char* text) noexcept { return text ? std::string_view(text) : std::string_view(); }

}  // namespace nemra
