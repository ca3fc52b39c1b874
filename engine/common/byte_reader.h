/// Reading little-endian numbers and texts out of bytes that nobody vouches for.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <type_traits>
#include <utility>

namespace nemra {

static_assert(std::endian::native == std::endian::little, "files are little-endian, and so are the machines that this runs on");

/// Can't run past the end nor be talked into a huge allocation. After a failure every read gives zero or nothing, so that a
/// caller asks ok() once at the end.
class ByteReader {
public:
    explicit ByteReader(std::span<const char> bytes) noexcept : rest_(bytes) {}

    bool ok() const noexcept { return ok_; }
    std::size_t left() const noexcept { return rest_.size(); }
    std::span<const char> rest() const noexcept { return rest_; }

    /// The next `count` bytes as they lie there.
    std::span<const char> take(std::size_t count) noexcept {
        if (!ok_ || count > rest_.size()) {  // compared with what is left: an offset plus a count could wrap
            ok_ = false;
            return {};
        }
        return std::exchange(rest_, rest_.subspan(count)).first(count);
    }
    template <class Number>
    Number value() noexcept {
        static_assert(std::is_arithmetic_v<Number>);
        Number number{};
        if (const auto bytes = take(sizeof(Number)); ok_) std::memcpy(&number, bytes.data(), sizeof(Number));
        return number;
    }
    /// A count of elements of at least that size each, which the rest has room for; 0 and a failure if it hasn't.
    std::size_t count(std::size_t elementSize) noexcept {
        const auto number = value<std::uint32_t>();
        if (number > rest_.size() / elementSize) ok_ = false;
        return ok_ ? number : 0;
    }
    /// A count and that many bytes.
    std::string text() {
        const auto bytes = take(count(1));
        return {bytes.data(), bytes.size()};
    }

private:
    std::span<const char> rest_;
    bool ok_ = true;
};

/// The counterpart: appends to a vector or a string of char.
template <class Bytes, class Number>
void appendNumber(Bytes& bytes, Number number) {
    static_assert(std::is_arithmetic_v<Number>);
    const std::size_t at = bytes.size();
    bytes.resize(at + sizeof(Number));
    std::memcpy(bytes.data() + at, &number, sizeof(Number));
}
template <class Bytes>
void appendText(Bytes& bytes, const std::string& text) {
    appendNumber(bytes, static_cast<std::uint32_t>(text.size()));
    bytes.insert(bytes.end(), text.begin(), text.end());
}

}  // namespace nemra
