#include "engine/common/buffer.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "engine/common/pages.h"

namespace nemra {

void Buffer::reallocate(std::size_t capacity) {
    if (capacity == std::numeric_limits<std::size_t>::max()) throw std::bad_alloc();
    auto* const block = static_cast<char*>(std::realloc(data_.get(), capacity + 1));
    if (block == nullptr) throw std::bad_alloc();
    static_cast<void>(data_.release());  // realloc has freed it
    data_.reset(block);
    capacity_ = capacity;
}

void Buffer::reserve(std::size_t capacity) {
    if (capacity > capacity_ || !data_) reallocate(capacity);
}

void Buffer::reserveMore(std::size_t more) {
    if (more > std::numeric_limits<std::size_t>::max() / 4 - size_) throw std::bad_alloc();
    reallocate(std::max({size_ + more, 2 * capacity_, std::size_t{256}}));
}

Buffer Buffer::adopt(char* block, std::size_t size) {
    Buffer buffer;
    buffer.data_.reset(block);
    buffer.size_ = size;
    buffer.reallocate(size);
    return buffer;
}

void Buffer::forget(std::size_t at, std::size_t size) noexcept { giveBack(wholePages({data_.get() + at, size})); }

char* Buffer::release() && {
    reallocate(size_);
    data_.get()[size_] = '\0';
    size_ = capacity_ = 0;
    return data_.release();
}

}  // namespace nemra
