/// The formats of the functions that give objects as bytes.
#pragma once

#include <cstdint>

#include "engine/common/log.h"
#include "engine/common/text.h"
#include "engine/node/svxml/svxml.h"

namespace nemra::node {

enum class Format { svxml = 0, svbin = 1, svxmlz = 2, svbinz = 3 };

/// `object` in that format as the caller's bytes, with their count in `size` (which may be null). Null, with a message and size
/// 0, for an encoding that isn't there.
template <class Object, class Size>
char* serialize(const char* function, const Object& object, int format, Size* size) {
    if (static_cast<Format>(format) != Format::svxml) {
        const bool known = format > 0 && format <= static_cast<int>(Format::svbinz);
        log::warning(function, known ? "this encoding is not available yet" : "there is no such encoding");
        return nullptr;
    }
    const std::string text = writeSvxml(object);
    char* const copy = callersText(text);
    if (size != nullptr) *size = static_cast<Size>(text.size());
    return copy;
}

}  // namespace nemra::node
