#include "engine/core/image/exr_head.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "engine/common/byte_reader.h"
#include "engine/core/image/picture_film.h"

namespace nemra::core {

namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::uint32_t kSeveralParts = 0x1000;

std::string_view takeName(ByteReader& file) {
    const std::span<const char> rest = file.rest().first(std::min(file.left(), kLongestName + 1));
    const auto end = std::find(rest.begin(), rest.end(), '\0');
    if (!file.ok() || end == rest.end()) throw PictureFault("the header is cut short, or holds a name without an end");
    const auto name = file.take(static_cast<std::size_t>(end - rest.begin()) + 1);
    return {name.data(), name.size() - 1};
}

/// Bytes of a type that always has as many; 0 for others.
std::size_t sizeOfType(std::string_view type) {
    constexpr std::array<std::pair<std::string_view, std::size_t>, 24> sizes{{{"box2i", 16},
                                                                              {"box2f", 16},
                                                                              {"chromaticities", 32},
                                                                              {"compression", 1},
                                                                              {"deepImageState", 1},
                                                                              {"double", 8},
                                                                              {"envmap", 1},
                                                                              {"float", 4},
                                                                              {"int", 4},
                                                                              {"keycode", 28},
                                                                              {"lineOrder", 1},
                                                                              {"m33f", 36},
                                                                              {"m33d", 72},
                                                                              {"m44f", 64},
                                                                              {"m44d", 128},
                                                                              {"rational", 8},
                                                                              {"tiledesc", 9},
                                                                              {"timecode", 8},
                                                                              {"v2i", 8},
                                                                              {"v2f", 8},
                                                                              {"v2d", 16},
                                                                              {"v3i", 12},
                                                                              {"v3f", 12},
                                                                              {"v3d", 24}}};
    const auto found = std::find_if(sizes.begin(), sizes.end(), [&](const auto& pair) { return pair.first == type; });
    return found == sizes.end() ? 0 : found->second;
}

/// Whether the value ends where the library will stop to read it; what it reads next would else be something made up.
bool endsRight(std::string_view type, std::span<const char> value) {
    if (const std::size_t size = sizeOfType(type)) return value.size() == size;
    ByteReader reader(value);
    if (type == "chlist") {
        constexpr std::size_t description = 16;  // pixel type, flags, sampling
        while (!takeName(reader).empty()) reader.take(description);
        return reader.ok() && reader.left() == 0;
    }
    if (type == "preview") {
        const std::uint64_t width = reader.value<std::uint32_t>();
        const std::uint64_t height = reader.value<std::uint32_t>();
        return reader.ok() && (width == 0 || height <= reader.left() / 4 / width) && 4 * width * height == reader.left();
    }
    if (type == "stringvector") {
        while (reader.ok() && reader.left() > 0) reader.take(reader.value<std::uint32_t>());
        return reader.ok();
    }
    return type != "floatvector" || value.size() % 4 == 0;
}

/// False at the end of the headers.
bool checkHeader(ByteReader& file) {
    for (bool first = true;; first = false) {
        if (takeName(file).empty()) return !first;
        const std::string_view type = takeName(file);
        const auto size = file.value<std::int32_t>();
        if (!file.ok() || size < 0 || static_cast<std::size_t>(size) > file.left() ||
            !endsRight(type, file.take(static_cast<std::size_t>(size)))) {
            throw PictureFault("the file is cut short, or an attribute's length is wrong");
        }
    }
}

}  // namespace

std::size_t checkExrHead(std::span<const char> bytes) {
    ByteReader file(bytes);
    file.take(8);  // magic number and version
    bool more = checkHeader(file);
    while (more && hasSeveralParts(bytes)) more = checkHeader(file);
    if (!file.ok()) throw PictureFault("the file is cut short");
    return bytes.size() - file.left();
}

bool hasSeveralParts(std::span<const char> bytes) noexcept {
    ByteReader file(bytes);
    file.take(4);  // magic number
    return (file.value<std::uint32_t>() & kSeveralParts) != 0;
}

}  // namespace nemra::core
