#include "engine/common/paged_memory.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace nemra {

namespace {

/// -1 if there can be none of that size. A signal would end the process if the file were larger than its limit, or if a page
/// found no room on the disk later.
int openReserved(std::size_t bytes) noexcept {
    rlimit limit{};
    if (::getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur < bytes) return -1;
    const char* folder = ::secure_getenv("TMPDIR");
    if (folder == nullptr || *folder == '\0') folder = P_tmpdir;
    const int file = ::open(folder, O_TMPFILE | O_RDWR | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) return -1;
    struct statfs disk {};
    const bool isDisk = ::fstatfs(file, &disk) == 0 && disk.f_type != TMPFS_MAGIC && disk.f_type != RAMFS_MAGIC;
    if (isDisk && bytes < disk.f_bavail / 2 * static_cast<std::size_t>(disk.f_bsize) &&
        ::fallocate(file, 0, 0, static_cast<off_t>(bytes)) == 0) {
        return file;
    }
    ::close(file);
    return -1;
}

}  // namespace

void* mapPaged(std::size_t bytes) {
    void* block = MAP_FAILED;
    if (const int file = openReserved(bytes); file >= 0) {
        block = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        ::close(file);  // the mapping keeps it
    }
    if (block == MAP_FAILED) {
        block = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (block == MAP_FAILED) throw std::bad_alloc();
        ::madvise(block, bytes, MADV_HUGEPAGE);
    }
    return block;
}

void unmapPaged(void* block, std::size_t bytes) noexcept { ::munmap(block, bytes); }

}  // namespace nemra
