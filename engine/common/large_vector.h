/// Vectors for the arrays of meshes: large blocks come on huge pages. Touching fresh memory in pages of 4 KiB takes longer than
/// copying into it.
///
/// Stands by itself, so that the Python module can have it too.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <vector>

namespace nemra {

template <class T>
struct LargeAllocator {
    using value_type = T;

    LargeAllocator() = default;
    template <class Other>
    LargeAllocator(const LargeAllocator<Other>&) noexcept {}

    T* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_array_new_length();
        const std::size_t bytes = count * sizeof(T);
        if (bytes < kLeast) return static_cast<T*>(::operator new(bytes));
        const std::size_t whole = (bytes + kHugePage - 1) / kHugePage * kHugePage;
        void* const block = std::aligned_alloc(kHugePage, whole);
        if (block == nullptr) throw std::bad_alloc();
        ::madvise(block, whole, MADV_HUGEPAGE);  // where there are none the pages are as always
        return static_cast<T*>(block);
    }
    void deallocate(T* block, std::size_t count) noexcept {
        if (count * sizeof(T) < kLeast) {
            ::operator delete(block);
        } else {
            std::free(block);
        }
    }
    bool operator==(const LargeAllocator&) const = default;

private:
    static constexpr std::size_t kHugePage = std::size_t{2} << 20;
    static constexpr std::size_t kLeast = 2 * kHugePage;
};

template <class T>
using LargeVector = std::vector<T, LargeAllocator<T>>;

}  // namespace nemra
