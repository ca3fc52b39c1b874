/// Bytes that grow and then go to a caller without a copy.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>

#include "module/flat/nemra_types.h"

namespace nemra {

/// On the C heap, since callers free with freeCharArray, and since large blocks grow there by moving pages and not bytes. Memory
/// that nobody has written yet costs nothing.
class NEMRA_API Buffer {
public:
    Buffer() = default;
    /// With that much room. Throws std::bad_alloc.
    explicit Buffer(std::size_t capacity) { reserve(capacity); }

    char* data() noexcept { return data_.get(); }
    const char* data() const noexcept { return data_.get(); }
    std::size_t size() const noexcept { return size_; }
    std::span<const char> bytes() const noexcept { return {data_.get(), size_}; }
    std::string_view text() const noexcept { return {data_.get(), size_}; }

    /// Makes room for at least that many bytes in all, and one more. Throws std::bad_alloc; the contents stay.
    void reserve(std::size_t capacity);
    /// `more` bytes behind the end, to be written and then taken in by grow.
    char* room(std::size_t more) {
        if (capacity_ - size_ < more) reserveMore(more);
        return data_.get() + size_;
    }
    /// The first `more` bytes of the room have been written.
    void grow(std::size_t more) noexcept { size_ += more; }
    /// Cuts it to its first `size` bytes; the room stays.
    void shrink(std::size_t size) noexcept { size_ = size; }
    void clear() noexcept { shrink(0); }
    /// Nobody will look at these bytes again, and their memory goes back to the system as far as it makes up whole pages.
    void forget(std::size_t at, std::size_t size) noexcept;
    void append(std::string_view text) {
        if (text.empty()) return;
        std::memcpy(room(text.size()), text.data(), text.size());
        size_ += text.size();
    }
    void append(std::size_t count, char c) {
        std::memset(room(count), c, count);
        size_ += count;
    }
    void operator+=(std::string_view text) { append(text); }
    void operator+=(char c) {
        *room(1) = c;
        ++size_;
    }
    /// Takes over `size` bytes that stand at the front of a block of malloc, which is cut down to them.
    static Buffer adopt(char* block, std::size_t size);
    /// The bytes with a closing zero, for the caller, who frees them with freeCharArray. Never null.
    char* release() &&;

private:
    struct Free {
        void operator()(char* block) const noexcept { std::free(block); }
    };
    void reserveMore(std::size_t more);
    void reallocate(std::size_t capacity);

    std::unique_ptr<char, Free> data_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;  // one byte less than the block has
};

}  // namespace nemra
