/// Memory for what a process keeps without touching it often: the system can write it to disk when it needs the room.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "module/flat/nemra_types.h"

namespace nemra {

/// Zeros that stand on a file without a name in the temporary directory, whose room on the disk is reserved. Ordinary memory
/// takes its place where that can't be, or would take more than half of what is free there, or where such files are memory
/// themselves. Throws std::bad_alloc.
NEMRA_API void* mapPaged(std::size_t bytes);
NEMRA_API void unmapPaged(void* block, std::size_t bytes) noexcept;

/// For vectors: blocks of at least kLeast bytes are mapped as above if `paged`; all others come as from std::allocator. A copy of
/// a vector stands where the original does. What is mapped holds zeros already, so that a vector which is made or resized to so
/// many zeros touches none of its pages, as long as nothing in it was destroyed.
template <class T>
struct PagedAllocator {
    using value_type = T;
    using propagate_on_container_move_assignment = std::true_type;
    using propagate_on_container_swap = std::true_type;
    static constexpr std::size_t kLeast = std::size_t{1} << 20;

    bool paged = false;

    PagedAllocator() = default;
    explicit PagedAllocator(bool isPaged) noexcept : paged(isPaged) {}
    // A vector that gives its block away gives away what is known of it; a copy stands for no block yet.
    PagedAllocator(const PagedAllocator& other) noexcept : paged(other.paged) {}
    PagedAllocator(PagedAllocator&&) noexcept = default;
    PagedAllocator& operator=(const PagedAllocator& other) noexcept {
        paged = other.paged;
        zeroed_ = false;
        return *this;
    }
    PagedAllocator& operator=(PagedAllocator&&) noexcept = default;
    ~PagedAllocator() = default;
    template <class Other>
    PagedAllocator(const PagedAllocator<Other>& other) noexcept : paged(other.paged) {}

    T* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_array_new_length();
        zeroed_ = isMapped(count);
        return static_cast<T*>(zeroed_ ? mapPaged(count * sizeof(T)) : ::operator new(count * sizeof(T)));
    }
    template <class U, class... Values>
    void construct(U* place, Values&&... values) {
        if constexpr (sizeof...(Values) == 0) {
            if (zeroed_) return;
        }
        ::new (static_cast<void*>(place)) U(std::forward<Values>(values)...);
    }
    template <class U>
    void destroy(U*) noexcept {
        zeroed_ = false;  // what stood there isn't zero any more
    }
    void deallocate(T* block, std::size_t count) noexcept {
        if (isMapped(count)) {
            unmapPaged(block, count * sizeof(T));
        } else {
            ::operator delete(block);
        }
    }
    bool operator==(const PagedAllocator& other) const noexcept { return paged == other.paged; }

private:
    static_assert(std::is_arithmetic_v<T>, "zeros stand for a T, which needs no destructor");
    bool isMapped(std::size_t count) const noexcept { return paged && count * sizeof(T) >= kLeast; }

    bool zeroed_ = false;  ///< the block of the vector that owns this was mapped, and only written to since
};

template <class T>
using PagedVector = std::vector<T, PagedAllocator<T>>;

}  // namespace nemra
