#include "engine/node/encoding/gzip.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <string_view>

#include "engine/node/encoding/limits.h"

namespace nemra::node {

namespace {

// Higher levels save a few percent of a mesh and take five times as long.
constexpr int kLevel = 1;
constexpr std::size_t kLeastMember = 18;    // header and trailer
constexpr std::size_t kUsualGzipRatio = 8;  // of text, that of arrays is lower
constexpr std::size_t kRoomGrowth = 4;
constexpr std::string_view kHeader("\x1f\x8b\x08\0\0\0\0\0\x04\xff", 10);  // deflate, no name, no time, fast, any system

struct FreeCompressor {
    void operator()(libdeflate_compressor* it) const noexcept { libdeflate_free_compressor(it); }
};
struct FreeDecompressor {
    void operator()(libdeflate_decompressor* it) const noexcept { libdeflate_free_decompressor(it); }
};

void appendNumber(Buffer& out, std::uint32_t number, int bytes) {
    for (int i = 0; i < bytes; ++i) out += static_cast<char>(number >> (8 * i));
}

/// The last four bytes of a member: the size of its contents, modulo 2^32.
std::size_t statedSize(std::span<const char> bytes) noexcept {
    std::size_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) size |= std::size_t{static_cast<unsigned char>(bytes[bytes.size() - 4 + i])} << (8 * i);
    return size;
}

bool isTaken(std::size_t contents, std::size_t compressed) noexcept {
    return contents <= kFreeInflatedBytes || contents / kMaxGzipRatio <= compressed;
}

/// Blocks that hold the bytes as they are (RFC 1951, 3.2.4); another block has to follow.
void appendStored(Buffer& out, std::span<const char> bytes) {
    constexpr std::size_t kMaxBlock = 0xffff;
    while (!bytes.empty()) {
        const std::size_t size = std::min(bytes.size(), kMaxBlock);
        out += '\0';
        appendNumber(out, static_cast<std::uint32_t>(size), 2);
        appendNumber(out, ~static_cast<std::uint32_t>(size), 2);
        out.append({bytes.data(), size});
        bytes = bytes.subspan(size);
    }
}

/// One member, of which the first `stored` bytes of the contents aren't compressed.
Buffer member(std::span<const char> bytes, std::size_t stored) {
    const std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor(libdeflate_alloc_compressor(kLevel));
    if (!compressor) throw std::bad_alloc();
    Buffer out;
    out += kHeader;
    appendStored(out, bytes.first(stored));
    const auto rest = bytes.subspan(stored);
    const std::size_t bound = libdeflate_deflate_compress_bound(compressor.get(), rest.size());
    const std::size_t size = libdeflate_deflate_compress(compressor.get(), rest.data(), rest.size(), out.room(bound), bound);
    if (size == 0) throw std::logic_error("gzip found its own bound too small");
    out.grow(size);
    appendNumber(out, libdeflate_crc32(0, bytes.data(), bytes.size()), 4);
    appendNumber(out, static_cast<std::uint32_t>(bytes.size()), 4);
    return out;
}

}  // namespace

Buffer gzip(std::span<const char> bytes) {
    if (bytes.size() > kMaxInflatedBytes)
        throw std::length_error("more than 1 GiB can't be gzipped: no reader would take it back");
    Buffer out = member(bytes, 0);
    // What compresses so well that readers would take it for a bomb gets a part stored as it is.
    return isTaken(bytes.size(), out.size()) ? std::move(out) : member(bytes, bytes.size() / kMaxGzipRatio);
}

bool isGzip(std::span<const char> bytes) noexcept { return bytes.size() >= 2 && bytes[0] == '\x1f' && bytes[1] == '\x8b'; }

bool gunzip(std::span<const char> bytes, Buffer& out, std::string& why, Length length) {
    const auto refuse = [&](std::string reason) {
        why = std::move(reason);
        return false;
    };
    if (bytes.size() < kLeastMember) return refuse("the gzip data is cut off at byte " + std::to_string(bytes.size()));
    const std::size_t most = std::min(kMaxInflatedBytes, std::max(kFreeInflatedBytes, (bytes.size() + 1) * kMaxGzipRatio - 1));
    std::size_t room = std::min(most, std::max(kFreeInflatedBytes, bytes.size() * kUsualGzipRatio));
    if (length == Length::known) {
        room = statedSize(bytes);
        if (room > kMaxInflatedBytes)
            return refuse("the gzip data would inflate to " + std::to_string(room) + " bytes, more than 1 GiB");
        if (!isTaken(room, bytes.size()))
            return refuse("the gzip data would inflate to " + std::to_string(room / bytes.size()) +
                          " times its size, which no scene does");
    }
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
    if (!decompressor) throw std::bad_alloc();
    std::size_t used = 0;
    std::size_t size = 0;
    const auto inflate = [&] {
        return libdeflate_gzip_decompress_ex(decompressor.get(), bytes.data(), bytes.size(), out.room(room), room, &used, &size);
    };
    auto result = inflate();
    // Memory that isn't written yet costs nothing, but a limit on addresses may count it: so not all of it at once.
    while (result == LIBDEFLATE_INSUFFICIENT_SPACE && length == Length::claimed && room < most) {
        room = std::min(most, room * kRoomGrowth);
        result = inflate();
    }
    if (result == LIBDEFLATE_INSUFFICIENT_SPACE)
        return refuse("the gzip data inflates to more than " +
                      (length == Length::known ? "the " + std::to_string(room) + " bytes that its end says"
                                               : std::to_string(most) + " bytes, which no scene of its size does"));
    if (result != LIBDEFLATE_SUCCESS)
        return refuse("the gzip data is damaged or cut off at byte " + std::to_string(bytes.size()));
    if (used != bytes.size()) return refuse("the gzip data ends at byte " + std::to_string(used) + ", but something follows");
    out.grow(size);
    return true;
}

}  // namespace nemra::node
