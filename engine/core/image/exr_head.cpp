#include "engine/core/image/exr_head.h"

#include <string_view>

#include "engine/common/byte_reader.h"
#include "engine/core/image/picture_film.h"

namespace nemra::core {

namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::uint32_t kSeveralParts = 0x1000;

/// The characters before the next zero byte.
std::size_t takeName(ByteReader& file) {
    std::size_t length = 0;
    while (file.ok() && file.value<char>() != '\0') {
        if (++length > kLongestName) throw PictureFault("the header holds a name without an end");
    }
    return length;
}

/// False at the end of the headers.
bool checkHeader(ByteReader& file) {
    for (bool first = true;; first = false) {
        if (takeName(file) == 0) return !first;
        takeName(file);  // of the type
        const auto size = file.value<std::int32_t>();
        if (size < 0 || static_cast<std::size_t>(size) > file.left())
            throw PictureFault("the file is cut short, or an attribute's length is wrong");
        file.take(static_cast<std::size_t>(size));
    }
}

}  // namespace

void checkExrHead(std::span<const char> bytes) {
    ByteReader file(bytes);
    file.take(4);  // magic number
    const auto version = file.value<std::uint32_t>();
    bool more = checkHeader(file);
    while (more && (version & kSeveralParts) != 0) more = checkHeader(file);
    if (!file.ok()) throw PictureFault("the file is cut short");
}

}  // namespace nemra::core
