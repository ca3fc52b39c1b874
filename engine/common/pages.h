/// Memory that goes back to the system before its block is freed.
#pragma once

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace nemra {

/// The whole pages among these bytes.
inline std::span<char> wholePages(std::span<char> bytes) noexcept {
    constexpr std::size_t kPage = 4096;
    const auto address = reinterpret_cast<std::uintptr_t>(bytes.data());
    const std::size_t first = (kPage - address % kPage) % kPage;
    const std::size_t last = bytes.size() - std::min(bytes.size(), (address + bytes.size()) % kPage);
    return first < last ? bytes.subspan(first, last - first) : std::span<char>();
}

/// Gives back the memory of whole pages, which read as zeros from then on.
inline void giveBack(std::span<char> pages) noexcept {
    if (!pages.empty()) ::madvise(pages.data(), pages.size(), MADV_DONTNEED);
}

}  // namespace nemra
