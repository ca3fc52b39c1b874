#include "engine/core/output/write_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

#include "engine/common/log.h"

namespace nemra::core {

namespace {

class Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const noexcept { return number_; }
    /// A full disk may show only here, so this result counts.
    bool close() noexcept { return ::close(std::exchange(number_, -1)) == 0; }

private:
    int number_;
};

bool writeAll(int descriptor, std::span<const char> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            if (written == 0) errno = EIO;
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

bool failed(const std::string& path, const char* step, int reason) {
    log::error(path, std::string("can't ") + step + ": " + std::generic_category().message(reason));
    return false;
}

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// The file that a symbolic link leads to, so that the link stays.
std::string withoutLinks(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    return real ? std::string(real.get()) : path;
}

/// The number of the fault, or 0.
int writingFault(const std::string& path) {
    struct stat found {};
    const bool exists = ::stat(path.c_str(), &found) == 0;
    if (!exists && errno != ENOENT) return errno;
    if (exists && S_ISDIR(found.st_mode)) return EISDIR;
    if (exists && ::access(path.c_str(), W_OK) != 0) return errno;
    if (exists && !S_ISREG(found.st_mode)) return 0;
    return ::access(folderOf(exists ? withoutLinks(path) : path).c_str(), W_OK | X_OK) == 0 ? 0 : errno;
}

bool writeDirectly(const std::string& path, std::span<const char> bytes) {
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (file.get() < 0) return failed(path, "open the file", errno);
    if (!writeAll(file.get(), bytes)) return failed(path, "write the file", errno);
    return file.close() || failed(path, "close the file", errno);
}

}  // namespace

std::string whyNotWritable(const std::string& path) {
    const int fault = writingFault(path);
    return fault == 0 ? "" : std::generic_category().message(fault);
}

bool writeFileWhole(const std::string& requested, std::span<const char> bytes) {
    struct stat old {};
    const bool exists = ::stat(requested.c_str(), &old) == 0;
    if (exists && S_ISDIR(old.st_mode)) return failed(requested, "write the file", EISDIR);
    if (exists && !S_ISREG(old.st_mode)) return writeDirectly(requested, bytes);
    const std::string path = exists ? withoutLinks(requested) : requested;
    if (exists && ::access(path.c_str(), W_OK) != 0) return failed(requested, "write the file", errno);
    const std::string folder = folderOf(path);

    // A short name of its own: the wanted one may already be as long as the file system takes.
    static std::atomic<unsigned> counter{0};
    std::string temporary;
    int descriptor = -1;
    do {  // a killed process of the same number may have left its files behind
        temporary = folder + "/.nemra-" + std::to_string(::getpid()) + "-" + std::to_string(counter.fetch_add(1)) + ".part";
        descriptor = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor < 0 && errno == EEXIST);
    if (descriptor < 0) return failed(requested, "create the file", errno);
    Descriptor file(descriptor);

    const auto giveUp = [&](const char* step) {
        const int reason = errno;
        ::unlink(temporary.c_str());
        return failed(requested, step, reason);
    };
    if (exists && ::fchmod(file.get(), old.st_mode & 07777) != 0) return giveUp("keep the file's mode");
    if (!writeAll(file.get(), bytes)) return giveUp("write the file");
    if (::fsync(file.get()) != 0) return giveUp("flush the file");
    if (!file.close()) return giveUp("close the file");
    if (::rename(temporary.c_str(), path.c_str()) != 0) return giveUp("rename the file");

    // The new name itself is safe only when the folder is; a folder that can't be flushed is no reason to call the file
    // unwritten.
    const Descriptor parent(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (parent.get() >= 0) ::fsync(parent.get());
    return true;
}

}  // namespace nemra::core
