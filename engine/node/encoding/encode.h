/// The four encodings by number.
#pragma once

#include <optional>

#include "engine/common/buffer.h"
#include "engine/node/encoding/gzip.h"
#include "engine/node/svbin/svbin.h"
#include "engine/node/svxml/svxml.h"

namespace nemra::node {

/// Numbers as the flat interface has them.
enum class Format { svxml = 0, svbin = 1, svxmlz = 2, svbinz = 3 };

inline std::optional<Format> formatOf(int number) noexcept {
    if (number < 0 || number > static_cast<int>(Format::svbinz)) return std::nullopt;
    return static_cast<Format>(number);
}

/// A scene, node, geometry or instance in that encoding. Throws std::length_error for what no reader would take back.
template <class Object>
Buffer encode(const Object& object, Format format) {
    switch (format) {
        case Format::svxml:
            return writeSvxml(object);
        case Format::svbin:
            return writeSvbin(object);
        case Format::svxmlz: {
            GzipPieces pieces;
            const Buffer rest = writeSvxml(object, [&](std::span<const char> piece) { pieces.add(piece); });
            return std::move(pieces).finish(rest.bytes());
        }
        case Format::svbinz:
            break;
    }
    return gzip(writeSvbin(object).bytes());
}

}  // namespace nemra::node
