#include "engine/core/result/read_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "engine/common/log.h"

namespace nemra::core {

namespace {

std::nullopt_t failed(const std::string& path, int reason) {
    log::error(path, "can't read the file: " + std::generic_category().message(reason));
    return std::nullopt;
}

struct Closing {
    int descriptor;
    ~Closing() { ::close(descriptor); }
};

}  // namespace

std::optional<Buffer> readFileWhole(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);  // a pipe without a writer would wait
    if (descriptor < 0) return failed(path, errno);
    const Closing closing{descriptor};
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) return failed(path, errno);
    if (S_ISDIR(status.st_mode)) return failed(path, EISDIR);
    if (!S_ISREG(status.st_mode)) return failed(path, EINVAL);
    if (static_cast<std::uint64_t>(status.st_size) > kMaxFileBytes) return failed(path, EFBIG);
    const auto size = static_cast<std::size_t>(status.st_size);
    Buffer bytes(size);
    while (bytes.size() < size) {
        const ssize_t got = ::read(descriptor, bytes.room(size - bytes.size()), size - bytes.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return failed(path, errno);
        if (got == 0) break;  // cut short meanwhile; what reads the bytes will notice
        bytes.grow(static_cast<std::size_t>(got));
    }
    return bytes;
}

}  // namespace nemra::core
