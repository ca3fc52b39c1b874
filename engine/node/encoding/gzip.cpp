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
// Deflate, no name, no time, fast, any system. A member that others follow has a field of its own behind that, which says its
// size.
constexpr std::string_view kHeader("\x1f\x8b\x08\0\0\0\0\0\x04\xff", 10);
constexpr std::string_view kHeaderOfMore("\x1f\x8b\x08\x04\0\0\0\0\x04\xff\x08\0SV\x04\0", 16);
constexpr std::size_t kTrailer = 8;
constexpr std::size_t kUsualGzipRatio = 8;  // of text, that of arrays is lower
constexpr std::size_t kRoomGrowth = 4;
constexpr std::size_t kLeastMember = kHeader.size() + kTrailer;
constexpr std::size_t kLeastOfMore = kHeaderOfMore.size() + 4 + kTrailer;

struct FreeCompressor {
    void operator()(libdeflate_compressor* it) const noexcept { libdeflate_free_compressor(it); }
};
struct FreeDecompressor {
    void operator()(libdeflate_decompressor* it) const noexcept { libdeflate_free_decompressor(it); }
};

void appendNumber(Buffer& out, std::uint32_t number, int bytes) {
    for (int i = 0; i < bytes; ++i) out += static_cast<char>(number >> (8 * i));
}

std::size_t number(std::span<const char> fourBytes) noexcept {
    std::size_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) number |= std::size_t{static_cast<unsigned char>(fourBytes[i])} << (8 * i);
    return number;
}

/// The last four bytes of a member: the size of its contents, modulo 2^32.
std::size_t statedSize(std::span<const char> member) noexcept { return number(member.last(4)); }

/// True for a member that others follow.
bool hasMore(std::span<const char> member) noexcept {
    return std::string_view(member.data(), member.size()).starts_with(kHeaderOfMore);
}

/// The first member of these bytes, which is all of them unless others follow it. Empty if it is cut off.
std::span<const char> firstMember(std::span<const char> bytes) noexcept {
    if (!hasMore(bytes)) return bytes;
    if (bytes.size() < kLeastOfMore) return {};
    const std::size_t size = number(bytes.subspan(kHeaderOfMore.size(), 4));
    return size < kLeastOfMore || size > bytes.size() ? std::span<const char>() : bytes.first(size);
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

enum class Place { only, before, last };  // of a member: before others, or behind others

/// Appends one member, of which the first `stored` bytes of the contents aren't compressed.
void appendMember(Buffer& out, std::span<const char> bytes, std::size_t stored, Place place) {
    const std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor(libdeflate_alloc_compressor(kLevel));
    if (!compressor) throw std::bad_alloc();
    const std::size_t begin = out.size();
    out += place == Place::before ? kHeaderOfMore : kHeader;
    if (place == Place::before) appendNumber(out, 0, 4);
    appendStored(out, bytes.first(stored));
    const auto rest = bytes.subspan(stored);
    const std::size_t bound = libdeflate_deflate_compress_bound(compressor.get(), rest.size());
    const std::size_t size = libdeflate_deflate_compress(compressor.get(), rest.data(), rest.size(), out.room(bound), bound);
    if (size == 0) throw std::logic_error("gzip found its own bound too small");
    out.grow(size);
    appendNumber(out, libdeflate_crc32(0, bytes.data(), bytes.size()), 4);
    appendNumber(out, static_cast<std::uint32_t>(bytes.size()), 4);
    if (place != Place::before) return;
    for (std::size_t i = 0; i < 4; ++i)
        out.data()[begin + kHeaderOfMore.size() + i] = static_cast<char>((out.size() - begin) >> (8 * i));
}

/// What compresses so well that readers would take it for a bomb gets a part stored as it is.
void appendTaken(Buffer& out, std::span<const char> bytes, Place place) {
    const std::size_t begin = out.size();
    appendMember(out, bytes, 0, place);
    const std::size_t compressed = out.size() - begin;
    // Readers look at the sums over all members, in which none may be above the limit because it would be free by itself.
    if (place == Place::only ? isTaken(bytes.size(), compressed) : bytes.size() / kMaxGzipRatio < compressed) return;
    out.shrink(begin);
    appendMember(out, bytes, bytes.size() / kMaxGzipRatio, place);
}

void checkTotal(std::size_t bytes) {
    if (bytes > kMaxInflatedBytes) throw std::length_error("more than 1 GiB can't be gzipped: no reader would take it back");
}

}  // namespace

void appendGzip(Buffer& out, std::span<const char> bytes) {
    checkTotal(bytes.size());
    appendTaken(out, bytes, Place::only);
}

Buffer gzip(std::span<const char> bytes) {
    Buffer out;
    appendGzip(out, bytes);
    return out;
}

void GzipPieces::add(std::span<const char> piece) {
    checkTotal(taken_ += piece.size());
    appendTaken(out_, piece, Place::before);
}

Buffer GzipPieces::finish(std::span<const char> rest) && {
    if (taken_ == 0) return gzip(rest);
    checkTotal(taken_ + rest.size());
    appendTaken(out_, rest, Place::last);
    return std::move(out_);
}

bool isGzip(std::span<const char> bytes) noexcept { return bytes.size() >= 2 && bytes[0] == '\x1f' && bytes[1] == '\x8b'; }

namespace {

/// `release` is told of each member that has been inflated.
template <class Release>
bool inflateMembers(std::span<const char> bytes, Buffer& out, std::string& why, const Release& release) {
    const auto refuse = [&](std::string reason) {
        why = std::move(reason);
        return false;
    };
    std::size_t stated = 0;
    auto left = bytes;
    for (bool isLast = false; !isLast;) {
        const auto member = firstMember(left);
        if (member.size() < kLeastMember) return refuse("the gzip data is cut off at byte " + std::to_string(bytes.size()));
        stated += statedSize(member);
        isLast = !hasMore(member);
        left = left.subspan(member.size());
    }
    if (stated > kMaxInflatedBytes)
        return refuse("the gzip data would inflate to " + std::to_string(stated) + " bytes, more than 1 GiB");
    if (!isTaken(stated, bytes.size()))
        return refuse("the gzip data would inflate to " + std::to_string(stated / bytes.size()) +
                      " times its size, which no scene does");
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
    if (!decompressor) throw std::bad_alloc();
    char* at = out.room(stated);
    for (left = bytes; !left.empty();) {
        const auto member = firstMember(left);
        const std::size_t room = statedSize(member);
        std::size_t used = 0;
        std::size_t size = 0;
        const auto result =
            libdeflate_gzip_decompress_ex(decompressor.get(), member.data(), member.size(), at, room, &used, &size);
        if (result == LIBDEFLATE_INSUFFICIENT_SPACE)
            return refuse("the gzip data inflates to more than the " + std::to_string(room) + " bytes that its end says");
        const auto end = static_cast<std::size_t>(member.data() - bytes.data()) + member.size();
        if (result != LIBDEFLATE_SUCCESS) return refuse("the gzip data is damaged or cut off at byte " + std::to_string(end));
        if (used != member.size())
            return refuse("the gzip data ends at byte " + std::to_string(end - member.size() + used) + ", but something follows");
        at += size;
        release(end - member.size(), member.size());
        left = left.subspan(member.size());
    }
    out.grow(static_cast<std::size_t>(at - (out.data() + out.size())));
    return true;
}

/// From the front: of a length that isn't certain nothing behind the last member's end is read, but for the few bytes that the
/// library loads ahead.
bool inflateFromFront(std::span<const char> bytes, Buffer& out, std::string& why) {
    const std::size_t before = out.size();
    const auto refuse = [&](std::string reason) {
        why = std::move(reason);
        out.shrink(before);
        return false;
    };
    const std::size_t most = std::min(kMaxInflatedBytes, std::max(kFreeInflatedBytes, (bytes.size() + 1) * kMaxGzipRatio - 1));
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
    if (!decompressor) throw std::bad_alloc();
    auto left = bytes;
    for (bool isLast = false; !isLast;) {
        const auto member = firstMember(left);
        if (member.size() < kLeastMember) return refuse("the gzip data is cut off at byte " + std::to_string(bytes.size()));
        isLast = !hasMore(member);
        const std::size_t mostHere = most - (out.size() - before);
        std::size_t room = std::min(mostHere, std::max(kFreeInflatedBytes, member.size() * kUsualGzipRatio));
        std::size_t used = 0;
        std::size_t size = 0;
        const auto inflate = [&] {
            return libdeflate_gzip_decompress_ex(decompressor.get(), member.data(), member.size(), out.room(room), room, &used,
                                                 &size);
        };
        auto result = inflate();
        // Memory that isn't written yet costs nothing, but a limit on addresses may count it: so not all of it at once.
        while (result == LIBDEFLATE_INSUFFICIENT_SPACE && room < mostHere) {
            room = std::min(mostHere, room * kRoomGrowth);
            result = inflate();
        }
        if (result == LIBDEFLATE_INSUFFICIENT_SPACE)
            return refuse("the gzip data inflates to more than " + std::to_string(most) +
                          " bytes, which no scene of its size does");
        const auto end = static_cast<std::size_t>(member.data() - bytes.data()) + member.size();
        if (result != LIBDEFLATE_SUCCESS) return refuse("the gzip data is damaged or cut off at byte " + std::to_string(end));
        if (used != member.size())
            return refuse("the gzip data ends at byte " + std::to_string(end - member.size() + used) + ", but something follows");
        out.grow(size);
        left = left.subspan(member.size());
    }
    return true;
}

}  // namespace

bool gunzip(std::span<const char> bytes, Buffer& out, std::string& why, Length length) {
    if (length == Length::claimed) return inflateFromFront(bytes, out, why);
    return inflateMembers(bytes, out, why, [](std::size_t, std::size_t) {});
}

bool gunzip(Buffer bytes, Buffer& out, std::string& why) {
    return inflateMembers(bytes.bytes(), out, why, [&](std::size_t at, std::size_t size) { bytes.forget(at, size); });
}

}  // namespace nemra::node
