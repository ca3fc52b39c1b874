#include "engine/core/output/write_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

#include "engine/common/log.h"

namespace nemra::core {

namespace {

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

/// Bytes that go to the system at once.
constexpr std::size_t kStep = std::size_t{1} << 20;

/// The new name itself is safe only when the folder is; a folder that can't be flushed is no reason to call the file unwritten.
void flushFolder(const std::string& folder) noexcept {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    ::fsync(descriptor);
    ::close(descriptor);
}

}  // namespace

std::string whyNotWritable(const std::string& path) {
    const int fault = writingFault(path);
    return fault == 0 ? "" : std::generic_category().message(fault);
}

NewFile::NewFile(std::string path) : path_(std::move(path)), target_(path_) {
    struct stat old {};
    const bool exists = ::stat(path_.c_str(), &old) == 0;
    if (exists && S_ISDIR(old.st_mode)) {
        fail("write the file", EISDIR);
    } else if (exists && !S_ISREG(old.st_mode)) {
        isDirect_ = true;
        descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0) fail("open the file", errno);
    } else {
        if (exists) target_ = withoutLinks(path_);
        if (exists && ::access(target_.c_str(), W_OK) != 0) {
            fail("write the file", errno);
        } else {
            makeTemporary();
            if (exists && failedStep_ == nullptr && ::fchmod(descriptor_, old.st_mode & 07777) != 0) {
                fail("keep the file's mode", errno);
            }
        }
    }
}

NewFile::~NewFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

template <class Make>
bool NewFile::withOwnName(Make&& make) {
    // A short name of its own: the wanted one may already be as long as the file system takes.
    static std::atomic<unsigned> counter{0};
    std::string name;
    bool made = false;
    do {  // a killed process of the same number may have left its files behind
        name = folderOf(target_) + "/.nemra-" + std::to_string(::getpid()) + "-" + std::to_string(counter.fetch_add(1)) + ".part";
        made = make(name.c_str());
    } while (!made && errno == EEXIST);
    if (made) temporary_ = std::move(name);
    return made;
}

bool NewFile::makeNameless() noexcept {
    // It gets its name through /proc; linking by the descriptor itself takes a privilege.
    static const bool hasProc = ::access("/proc/self/fd", X_OK) == 0;
    if (!hasProc) return false;
    descriptor_ = ::open(folderOf(target_).c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666);
    return descriptor_ >= 0;
}

void NewFile::makeTemporary() {
    if (makeNameless()) return;
    const bool made = withOwnName([this](const char* name) {
        descriptor_ = ::open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        return descriptor_ >= 0;
    });
    if (!made) fail("create the file", errno);
}

bool NewFile::append(std::span<const char> bytes) noexcept {
    if (failedStep_ != nullptr) return false;
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), std::min(bytes.size(), kStep));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return fail("write the file", written == 0 ? EIO : errno);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        size_ += static_cast<std::uint64_t>(written);
        if (size_ - started_ >= kStep) startFlush();
    }
    return true;
}

void NewFile::startFlush() noexcept {
    if (!isDirect_) {
        ::sync_file_range(descriptor_, static_cast<off64_t>(started_), static_cast<off64_t>(size_ - started_),
                          SYNC_FILE_RANGE_WRITE);
    }
    started_ = size_;
}

bool NewFile::finish() {
    if (failedStep_ == nullptr && flushAndRename()) return true;
    if (!temporary_.empty()) ::unlink(std::exchange(temporary_, std::string()).c_str());
    log::error(path_, std::string("can't ") + failedStep_ + ": " + std::generic_category().message(reason_));
    return false;
}

bool NewFile::flushAndRename() {
    if (!isDirect_) {
        if (::fsync(descriptor_) != 0) return fail("flush the file", errno);
        if (temporary_.empty() && !giveName()) return fail("create the file", errno);
        if (!temporary_.empty()) {
            if (::rename(temporary_.c_str(), target_.c_str()) != 0) return fail("rename the file", errno);
            temporary_.clear();
        }
    }
    // A device may tell only here. What was flushed has nothing left to lose.
    if (::close(std::exchange(descriptor_, -1)) != 0 && isDirect_) return fail("close the file", errno);
    if (!isDirect_) flushFolder(folderOf(target_));
    return true;
}

/// A link can't replace a file: where there is one it takes a name of its own, which is then renamed.
bool NewFile::giveName() {
    const std::string self = "/proc/self/fd/" + std::to_string(descriptor_);
    const auto link = [&](const char* name) { return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0; };
    return link(target_.c_str()) || (errno == EEXIST && withOwnName(link));
}

bool NewFile::fail(const char* step, int reason) noexcept {
    failedStep_ = step;
    reason_ = reason;
    return false;
}

bool writeFileWhole(const std::string& path, std::span<const char> bytes) {
    NewFile file(path);
    file.append(bytes);
    return file.finish();
}

}  // namespace nemra::core
