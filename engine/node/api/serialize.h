/// What the functions have in common that give objects as bytes.
#pragma once

#include "engine/common/log.h"
#include "engine/node/encoding/encode.h"

namespace nemra::node {

/// `object` in that format as the caller's bytes, with their count in `size` (which may be null). Null, with a message and size
/// 0, for an encoding that there isn't.
template <class Object, class Size>
char* serialize(const char* function, const Object& object, int format, Size* size) {
    const auto known = formatOf(format);
    if (!known) {
        log::warning(function, "there is no such encoding");
        return nullptr;
    }
    Buffer bytes = encode(object, *known);
    const auto count = static_cast<Size>(bytes.size());
    char* const text = std::move(bytes).release();
    if (size != nullptr) *size = count;
    return text;
}

}  // namespace nemra::node
