/// Texts and bytes that the engine allocated for the caller.
#pragma once

#include <memory>
#include <string>

#include "module/flat/nemra_common.h"

namespace Nemra {

struct FreeChars {
    void operator()(char* text) const noexcept { freeCharArray(text); }
};
using EngineText = std::unique_ptr<char, FreeChars>;

/// Copies a zero-terminated text and frees the engine's. Null raises std::logic_error, as the string's own constructor does.
inline std::string takeText(char* text) {
    const EngineText owned(text);
    return std::string(owned.get());
}

/// Copies `size` bytes, or a zero-terminated text if `size` is 0, and frees the engine's. Null raises std::logic_error.
inline std::string takeText(char* text, std::size_t size) {
    const EngineText owned(text);
    return size == 0 || !text ? std::string(owned.get()) : std::string(owned.get(), size);
}

}  // namespace Nemra
