#include "engine/node/read_scene.h"

#include <new>
#include <string>
#include <utility>

#include "engine/common/buffer.h"
#include "engine/common/log.h"
#include "engine/node/encoding/gzip.h"
#include "engine/node/import/file_bytes.h"
#include "engine/node/svbin/svbin.h"
#include "engine/node/svxml/svxml.h"

namespace nemra::node {

namespace {

enum class Encoding { svxml, svbin, unknown };

/// From the first bytes: svbin has the file identifier of its schema behind the root offset,
/// svxml a '<' behind blanks and an optional byte order mark.
Encoding encodingOf(std::span<const char> bytes) {
    std::string_view text(bytes.data(), bytes.size());
    if (text.size() >= 8 && text.substr(4, 4) == kSvbinIdentifier) return Encoding::svbin;
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && text[first] == '<' ? Encoding::svxml : Encoding::unknown;
}

bool refuse(std::span<const char> bytes, std::string_view origin) {
    log::error(origin,
               bytes.empty() ? "no scene: there is nothing in it" : "no scene: neither svxml nor svbin nor one of these gzipped");
    return false;
}

/// Bytes of our own, whose memory may be used up.
bool readPlain(Buffer bytes, std::string_view origin, Scene& scene, Unknown unknown) {
    switch (encodingOf(bytes.bytes())) {
        case Encoding::svxml:
            return readSvxml(std::move(bytes), origin, scene, unknown);
        case Encoding::svbin:
            return readSvbin(bytes.bytes(), origin, scene, unknown);
        case Encoding::unknown:
            break;
    }
    return refuse(bytes.bytes(), origin);
}

/// Inflates what is gzipped: a caller's bytes with a Length, or our own. False after one error message.
template <class Bytes, class... Certainty>
bool inflate(Bytes bytes, std::string_view origin, Buffer& inflated, Certainty... length) {
    std::string why;
    if (gunzip(std::move(bytes), inflated, why, length...)) return true;
    log::error(origin, why);
    return false;
}

}  // namespace

bool readScene(std::span<const char> bytes, std::string_view origin, Scene& scene, Unknown unknown, Length length) {
    try {
        switch (encodingOf(bytes)) {
            case Encoding::svxml:
                return readSvxml(bytes, origin, scene, unknown);
            case Encoding::svbin:
                return readSvbin(bytes, origin, scene, unknown);
            case Encoding::unknown:
                break;
        }
        if (!isGzip(bytes)) return refuse(bytes, origin);
        Buffer inflated;
        return inflate(bytes, origin, inflated, length) && readPlain(std::move(inflated), origin, scene, unknown);
    } catch (const std::bad_alloc&) {
        log::error(origin, "not enough memory to read this");
    }
    return false;
}

bool readSceneFile(const std::string& path, Scene& scene, Unknown unknown) {
    try {
        Buffer bytes;
        if (const std::string why = readFileBytes(path, bytes); !why.empty()) {
            log::error(path, "can't read the scene: " + why);
            return false;
        }
        if (isGzip(bytes.bytes())) {
            Buffer inflated;
            if (!inflate(std::move(bytes), path, inflated)) return false;
            bytes = std::move(inflated);
        }
        return readPlain(std::move(bytes), path, scene, unknown);
    } catch (const std::bad_alloc&) {
        log::error(path, "not enough memory to read this");
    }
    return false;
}

bool looksLikeScene(std::span<const char> bytes) { return isGzip(bytes) || encodingOf(bytes) != Encoding::unknown; }

}  // namespace nemra::node
