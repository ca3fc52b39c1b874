// Replaces the program's operator new and, without a sanitizer, which has its own, the C library's functions too: buffers that
// callers free, large arrays and the libraries below ask for their memory there.
#include "tests/allocation/failing_memory.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

constinit thread_local long leftHere = 0;  // 0: no end
constinit std::atomic<long> leftEverywhere{0};

bool fails() noexcept {
    if (leftHere > 0 && --leftHere == 0) return true;
    if (leftEverywhere.load(std::memory_order_relaxed) <= 0) return false;
    return leftEverywhere.fetch_sub(1) == 1;
}

}  // namespace

namespace nemra::test {

FailingMemory::FailingMemory(Counted counted, long n) noexcept : counted_(counted) {
    if (counted == Counted::here) {
        leftHere = n;
    } else {
        leftEverywhere = n;
    }
}

bool FailingMemory::end() noexcept {
    const long left = counted_ == Counted::here ? leftHere : leftEverywhere.load();
    leftHere = 0;
    leftEverywhere = 0;
    return left <= 0;
}

}  // namespace nemra::test

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

namespace {
void* plain(std::size_t size) noexcept { return std::malloc(size); }
}  // namespace

#else

extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);

static void* failed() noexcept {
    errno = ENOMEM;
    return nullptr;
}

void* malloc(std::size_t size) { return fails() ? failed() : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) { return fails() ? failed() : __libc_calloc(count, size); }
void* realloc(void* block, std::size_t size) { return fails() ? failed() : __libc_realloc(block, size); }
void* aligned_alloc(std::size_t alignment, std::size_t size) { return fails() ? failed() : __libc_memalign(alignment, size); }
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    if (fails()) return ENOMEM;
    *block = __libc_memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}

}  // extern "C"

namespace {
void* plain(std::size_t size) noexcept { return __libc_malloc(size); }
}  // namespace

#endif

namespace {

void* allocateOrNull(std::size_t size) noexcept { return fails() ? nullptr : plain(size == 0 ? 1 : size); }
void* allocate(std::size_t size) {
    void* const block = allocateOrNull(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
// Sorting asks for its memory this way, and goes on without.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNull(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNull(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
