#include "engine/node/import/file_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "engine/common/workdir.h"
#include "engine/node/encoding/limits.h"

namespace nemra::node {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

}  // namespace

std::string readFileBytes(const std::string& path, Buffer& bytes) {
    // A pipe without a writer would keep the opening waiting.
    const int descriptor = ::open(resolvePath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return std::strerror(errno);
    const std::unique_ptr<std::FILE, CloseFile> file(::fdopen(descriptor, "rb"));
    if (!file) {
        const int fault = errno;
        ::close(descriptor);
        return std::strerror(fault);
    }
    struct stat about {};
    if (::fstat(descriptor, &about) != 0) return std::strerror(errno);
    if (!S_ISREG(about.st_mode)) return "it isn't a regular file";
    if (about.st_size > static_cast<off_t>(kMaxFileBytes)) return "it is larger than 2 GiB";
    const auto size = static_cast<std::size_t>(about.st_size);
    errno = 0;
    bytes.grow(std::fread(bytes.room(size), 1, size, file.get()));
    return std::ferror(file.get()) ? std::strerror(errno) : std::string();
}

}  // namespace nemra::node
