/// Vectors that are filled once and whose type has no allocator of its own for large arrays (see large_vector.h).
///
/// Stands by itself, so that the Python module can have it too.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace nemra {

/// Room for `count` numbers, on huge pages where it is large: the first touch of fresh memory takes longer than to fill it, in
/// pages of 4 KiB.
template <class Number, class Memory>
void reserveOnHugePages(std::vector<Number, Memory>& numbers, std::size_t count) {
    constexpr std::uintptr_t page = std::uintptr_t{2} << 20;
    numbers.reserve(count);
    const auto begin = (reinterpret_cast<std::uintptr_t>(numbers.data()) + page - 1) / page * page;
    const auto end = reinterpret_cast<std::uintptr_t>(numbers.data() + count) / page * page;
    if (begin < end) ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);  // without them all is as always
}

}  // namespace nemra
