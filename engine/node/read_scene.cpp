#include "engine/node/read_scene.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

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

class OpenFile {
public:
    /// Not blocking, since opening a pipe would wait for its other end.
    explicit OpenFile(const std::string& path) : descriptor_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~OpenFile() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int descriptor() const noexcept { return descriptor_; }

private:
    int descriptor_;
};

/// The whole of a regular file. On failure one error message, and false.
bool readBytes(const std::string& path, Buffer& bytes) {
    const auto fail = [&](const std::string& why) {
        log::error(path, "can't read the scene: " + why);
        return false;
    };
    const OpenFile file(resolvePath(path));
    struct stat about {};
    if (file.descriptor() < 0 || fstat(file.descriptor(), &about) != 0) return fail(std::strerror(errno));
    if (!S_ISREG(about.st_mode)) return fail("it isn't a regular file");
    if (about.st_size > static_cast<off_t>(kMaxFileBytes)) return fail("it is larger than 2 GiB");
    const auto size = static_cast<std::size_t>(about.st_size);
    char* const room = bytes.room(size);
    while (bytes.size() < size) {
        const ssize_t got = ::read(file.descriptor(), room + bytes.size(), size - bytes.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return fail(std::strerror(errno));
        if (got == 0) break;
        bytes.grow(static_cast<std::size_t>(got));
    }
    return true;
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

/// Inflates what is gzipped. False after one error message.
bool inflate(std::span<const char> bytes, std::string_view origin, Buffer& inflated) {
    std::string why;
    if (gunzip(bytes, inflated, why)) return true;
    log::error(origin, why);
    return false;
}

}  // namespace

bool readScene(std::span<const char> bytes, std::string_view origin, Scene& scene, Unknown unknown) {
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
        return inflate(bytes, origin, inflated) && readPlain(std::move(inflated), origin, scene, unknown);
    } catch (const std::bad_alloc&) {
        log::error(origin, "not enough memory to read this");
    }
    return false;
}

bool readSceneFile(const std::string& path, Scene& scene, Unknown unknown) {
    try {
        Buffer bytes;
        if (!readBytes(path, bytes)) return false;
        if (isGzip(bytes.bytes())) {
            Buffer inflated;
            if (!inflate(bytes.bytes(), path, inflated)) return false;
            bytes = std::move(inflated);
        }
        return readPlain(std::move(bytes), path, scene, unknown);
    } catch (const std::bad_alloc&) {
        log::error(path, "not enough memory to read this");
        return false;
    }
}

}  // namespace nemra::node
