#include "engine/node/read_scene.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "engine/common/buffer.h"
#include "engine/common/log.h"
#include "engine/common/workdir.h"
#include "engine/node/encoding/gzip.h"
#include "engine/node/encoding/limits.h"
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

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

/// The whole of a regular file. On failure one error message, and false.
bool readBytes(const std::string& path, Buffer& bytes) {
    const auto fail = [&](const std::string& why) {
        log::error(path, "can't read the scene: " + why);
        return false;
    };
    errno = 0;
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(resolvePath(path).c_str(), "rb"));
    if (!file) return fail(std::strerror(errno));
    struct stat about {};
    if (fstat(fileno(file.get()), &about) != 0) return fail(std::strerror(errno));
    if (!S_ISREG(about.st_mode)) return fail("it isn't a regular file");
    if (about.st_size > static_cast<off_t>(kMaxFileBytes)) return fail("it is larger than 2 GiB");
    const auto size = static_cast<std::size_t>(about.st_size);
    bytes.grow(std::fread(bytes.room(size), 1, size, file.get()));
    if (std::ferror(file.get())) return fail(std::strerror(errno));
    return true;
}

bool readPlain(std::span<const char> bytes, std::string_view origin, Scene& scene, Unknown unknown) {
    switch (encodingOf(bytes)) {
        case Encoding::svxml:
            return readSvxml(bytes, origin, scene, unknown);
        case Encoding::svbin:
            return readSvbin(bytes, origin, scene, unknown);
        case Encoding::unknown:
            break;
    }
    log::error(origin,
               bytes.empty() ? "no scene: there is nothing in it" : "no scene: neither svxml nor svbin nor one of these gzipped");
    return false;
}

}  // namespace

bool readScene(std::span<const char> bytes, std::string_view origin, Scene& scene, Unknown unknown) {
    try {
        if (!isGzip(bytes)) return readPlain(bytes, origin, scene, unknown);
        Buffer inflated;
        std::string why;
        if (gunzip(bytes, inflated, why)) return readPlain(inflated.bytes(), origin, scene, unknown);
        log::error(origin, why);
    } catch (const std::bad_alloc&) {
        log::error(origin, "not enough memory to read this");
    }
    return false;
}

bool readSceneFile(const std::string& path, Scene& scene, Unknown unknown) {
    try {
        Buffer bytes;
        return readBytes(path, bytes) && readScene(bytes.bytes(), path, scene, unknown);
    } catch (const std::bad_alloc&) {
        log::error(path, "not enough memory to read this");
        return false;
    }
}

}  // namespace nemra::node
